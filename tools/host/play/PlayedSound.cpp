// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/play/PlayedSound.h"

#include <cmath>
#include <numbers>
#include <numeric>
#include <vector>

#include "host/AudioFiles.h"
#include "host/HostError.h"

namespace
{
/** One channel with some of its end before it and some of its beginning after it. */
[[nodiscard]] std::vector<float> withNeighbours (const float* channel, int numFrames, int numNeighbours)
{
    std::vector<float> result;
    result.reserve ((std::size_t) (numFrames + 2 * numNeighbours));

    for (int frame = -numNeighbours; frame < numFrames + numNeighbours; ++frame)
        result.push_back (channel[(frame % numFrames + numFrames) % numFrames]);

    return result;
}

/** Resampling by a sinc under a Blackman window, which is tabulated for every place that an output frame can have between two
    input frames. JUCE's interpolator of this kind computes the sinc for each sample, and takes seconds for a short loop. */
class Resampler
{
public:
    Resampler (int from, int to) : step (from / std::gcd (from, to)), numPlaces (to / std::gcd (from, to))
    {
        // Towards a lower rate what that cannot hold is cut off.
        const auto cutoff = std::min (1.0, (double) to / from);
        reach = (int) std::ceil (zeroCrossings / cutoff);

        for (int place = 0; place < numPlaces; ++place)
            for (int tap = 1 - reach; tap <= reach; ++tap)
                kernel.push_back (weight (tap - (double) place / numPlaces, cutoff));
    }

    [[nodiscard]] juce::AudioBuffer<float> resample (const juce::AudioBuffer<float>& input) const
    {
        const auto numInput = (juce::int64) input.getNumSamples();
        juce::AudioBuffer<float> output (input.getNumChannels(), (int) ((numInput * numPlaces + step - 1) / step));

        for (int channel = 0; channel < input.getNumChannels(); ++channel)
        {
            const auto padded = withNeighbours (input.getReadPointer (channel), input.getNumSamples(), reach);

            for (int frame = 0; frame < output.getNumSamples(); ++frame)
                output.setSample (channel, frame, sampleAt (padded, (juce::int64) frame * step));
        }

        return output;
    }

private:
    static constexpr int zeroCrossings = 32;

    [[nodiscard]] double weight (double frames, double cutoff) const
    {
        const auto x = std::numbers::pi * frames * cutoff;
        const auto angle = std::numbers::pi * frames / reach;
        const auto window = 0.42 + 0.5 * std::cos (angle) + 0.08 * std::cos (2.0 * angle);
        return window * cutoff * (x == 0.0 ? 1.0 : std::sin (x) / x);
    }

    [[nodiscard]] float sampleAt (const std::vector<float>& padded, juce::int64 place) const
    {
        const auto numTaps = (std::size_t) (2 * reach);
        const auto* const input = padded.data() + place / numPlaces + 1;
        const auto* const weights = kernel.data() + (std::size_t) (place % numPlaces) * numTaps;
        return (float) std::inner_product (weights, weights + numTaps, input, 0.0);
    }

    int step, numPlaces, reach = 0;
    std::vector<double> kernel;
};
} // namespace

PlayedSound PlayedSound::fromFile (const juce::File& file)
{
    constexpr double longestSeconds = 3600.0;
    AudioSource source (file, 0);

    if (source.numFrames() == 0)
        throw HostError (file.getFullPathName() + ": there is no sound in it");

    if ((double) source.numFrames() > longestSeconds * source.sampleRate())
        throw HostError (file.getFullPathName() + ": is longer than an hour, and play keeps all of it in memory");

    PlayedSound sound { { source.numChannels(), (int) source.numFrames() }, source.sampleRate() };
    source.read (sound.samples, 0, sound.samples.getNumSamples());
    return sound;
}

PlayedSound PlayedSound::atRate (double rate) const
{
    if (rate == sampleRate)
        return *this;

    const Resampler resampler (juce::roundToInt (sampleRate), juce::roundToInt (rate));
    return { resampler.resample (samples), rate };
}
