// SPDX-License-Identifier: AGPL-3.0-or-later
#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "host/HostError.h"
#include "host/play/PlayedSound.h"
#include "module/HostProcess.h"

namespace
{
/** A second of a sine, which closes without a seam. */
PlayedSound sine (double hertz, double rate)
{
    PlayedSound sound { { 1, (int) rate }, rate };

    for (int frame = 0; frame < (int) rate; ++frame)
        sound.samples.setSample (0, frame, (float) std::sin (2.0 * std::numbers::pi * hertz * frame / rate));

    return sound;
}

double largestDifference (const PlayedSound& sound, const PlayedSound& expected)
{
    auto largest = 0.0;

    for (int frame = 0; frame < expected.samples.getNumSamples(); ++frame)
        largest = std::max (
            largest, std::abs ((double) (sound.samples.getSample (0, frame) - expected.samples.getSample (0, frame))));

    return largest;
}
} // namespace

TEST (PlayedSound, KeepsASineAtAnotherRateFromItsFirstFrameToItsLast)
{
    // 80 dB below the sine, as far as the top of the band where a window of this length begins to act.
    constexpr double tolerance = 1.0e-4;

    for (const auto hertz : { 20.0, 1000.0, 15000.0 })
        for (const auto& [from, to] : { std::pair (44100.0, 48000.0), std::pair (96000.0, 44100.0) })
        {
            const auto sound = sine (hertz, from).atRate (to);
            ASSERT_EQ (sound.samples.getNumSamples(), (int) to);
            EXPECT_LT (largestDifference (sound, sine (hertz, to)), tolerance)
                << hertz << " Hz, " << from << " to " << to;
        }
}

TEST (PlayedSound, CutsOffWhatALowerRateCannotHold)
{
    const auto sound = sine (30000.0, 96000.0).atRate (44100.0);
    EXPECT_LT (sound.samples.getMagnitude (0, sound.samples.getNumSamples()), 1.0e-4f);
}

TEST (PlayedSound, RefusesAFileWithoutSound)
{
    const HostProcess folder;
    folder.writeSound ("empty.wav", 2, 0);
    EXPECT_THROW (static_cast<void> (PlayedSound::fromFile (folder.file ("empty.wav"))), HostError);
}
