// SPDX-License-Identifier: AGPL-3.0-or-later
#include "bitexact/DifferentialPlayer.h"

#include <sstream>
#include <type_traits>

namespace
{
constexpr int largestAnnouncedBlock = 8192;

template <typename Value>
bool isSameValue (Value a, Value b)
{
    // Sign and payload of a NaN are the compiler's business; the sign of a zero is the engine's.
    if constexpr (std::is_floating_point_v<Value>)
    {
        if (std::isnan (a) || std::isnan (b))
            return std::isnan (a) && std::isnan (b);

        return a == b && std::signbit (a) == std::signbit (b);
    }
    else
    {
        return a == b;
    }
}
} // namespace

//======================================================================================================================
juce::Optional<juce::AudioPlayHead::PositionInfo> DifferentialPlayer::Host::getPosition() const
{
    const auto transport = next();

    if (! transport.hasPosition)
        return {};

    PositionInfo info;
    info.setBpm (transport.bpm);
    info.setPpqPosition (transport.ppqPosition);
    info.setTimeSignature (TimeSignature { transport.timeSigNumerator, transport.timeSigDenominator });
    return info;
}

reference::Transport DifferentialPlayer::Host::next() const
{
    if (script)
    {
        if (beforeAnswer)
            beforeAnswer (queries);

        return script (queries++);
    }

    // Without a play head there is nothing to ask.
    if (standing.hasPlayHead)
        ++queries;

    return standing;
}

//======================================================================================================================
DifferentialPlayer::DifferentialPlayer (Channels channelsToUse) : channels (channelsToUse)
{
    plugIn.setPlayConfigDetails ((int) channels, (int) channels, 0.0, largestAnnouncedBlock);
    referenceEngine.transport = [this] { return referenceHost.next(); };
    setTransport (reference::Transport {});

    // By themselves no two generators walk alike.
    for (int i = 0; i < 2; ++i)
        seedLfo (i, 1u + (unsigned) i);
}

void DifferentialPlayer::seedLfo (int index, std::uint32_t seed)
{
    plugIn.lfo[(std::size_t) index].rng.seed (seed);
    referenceEngine.seedLfo (index, seed);
}

void DifferentialPlayer::setParameter (int index, float position)
{
    plugIn.getParameters()[index]->setValue (position);
    referenceEngine.setParameter (index, position);
}

void DifferentialPlayer::setChoice (int index, int choice)
{
    setParameter (index,
                  reference::positionOfChoice (choice, reference::parameterTable()[(std::size_t) index].stepCount));
}

void DifferentialPlayer::setSampleRate (double hostRate)
{
    plugIn.setRateAndBufferSizeDetails (hostRate, largestAnnouncedBlock);
    referenceEngine.setSampleRate (hostRate);
}

void DifferentialPlayer::prepareToPlay()
{
    plugIn.prepareToPlay (plugIn.getSampleRate(), largestAnnouncedBlock);
    referenceEngine.prepareToPlay();
}

void DifferentialPlayer::requestUpdate()
{
    plugIn.requestControlUpdate();
    referenceEngine.requestUpdate();
}

void DifferentialPlayer::setTransport (const reference::Transport& transport)
{
    for (auto* host : { &plugInHost, &referenceHost })
    {
        host->standing = transport;
        host->script = nullptr;
    }

    plugIn.setPlayHead (transport.hasPlayHead ? &plugInHost : nullptr);
}

void DifferentialPlayer::setTransport (TransportScript script)
{
    for (auto* host : { &plugInHost, &referenceHost })
    {
        host->script = script;
        host->queries = 0;
    }

    plugIn.setPlayHead (&plugInHost);
}

void DifferentialPlayer::moveDuringQueries (std::function<std::optional<KnobMove> (std::int64_t query)> moves)
{
    plugInHost.beforeAnswer = [=, this] (std::int64_t query)
    {
        if (const auto move = moves (query))
            plugIn.getParameters()[move->index]->setValue (move->position);
    };

    referenceHost.beforeAnswer = [=, this] (std::int64_t query)
    {
        if (const auto move = moves (query))
            referenceEngine.setParameter (move->index, move->position);
    };
}

void DifferentialPlayer::setFramesSinceRequest (std::int32_t frames)
{
    plugIn.framesSinceRequest = frames;
    referenceEngine.framesSinceRequest = frames;
}

void DifferentialPlayer::startAtRest()
{
    namespace Index = reference::Index;

    const auto rest = [this] (int index, ::SlewValue& actual, reference::SlewValue& expected)
    { actual.current = actual.target = expected.current = expected.target = referenceEngine.getParameter (index); };

    rest (Index::hpFreq, plugIn.hpFreqSlew, referenceEngine.hpFreqSlew);
    rest (Index::lpFreq, plugIn.lpFreqSlew, referenceEngine.lpFreqSlew);
    rest (Index::hpReso, plugIn.hpResoSlew, referenceEngine.hpResoSlew);
    rest (Index::lpReso, plugIn.lpResoSlew, referenceEngine.lpResoSlew);
}

//======================================================================================================================
void DifferentialPlayer::process (float* left, float* rightOrNull, int numFrames)
{
    const auto numChannels = (int) channels;
    jassert ((rightOrNull != nullptr) == (channels == Channels::stereo));

    referenceLeft.assign (left, left + numFrames);

    if (rightOrNull != nullptr)
        referenceRight.assign (rightOrNull, rightOrNull + numFrames);

    float* const pointers[] = { left, rightOrNull };
    juce::AudioBuffer<float> buffer (pointers, numChannels, numFrames);
    plugIn.processBlock (buffer, noMidi);
    referenceEngine.process (referenceLeft.data(), rightOrNull != nullptr ? referenceRight.data() : nullptr, numFrames);

    for (int n = 0; n < numFrames; ++n)
    {
        compareSample ("left", left[n], referenceLeft[(std::size_t) n], framesPlayed + n);

        if (rightOrNull != nullptr)
            compareSample ("right", rightOrNull[n], referenceRight[(std::size_t) n], framesPlayed + n);
    }

    framesPlayed += numFrames;
}

void DifferentialPlayer::updateControlRate()
{
    const juce::ScopedNoDenormals noDenormals;
    plugIn.updateControlRate();
    referenceEngine.updateControlRate();
}

std::pair<float, float> DifferentialPlayer::processFrame (float left, float right)
{
    const juce::ScopedNoDenormals noDenormals;
    const auto actual = plugIn.processFrame (left, right);
    const auto expected = referenceEngine.processFrame (left, right);
    compareSample ("left", actual.first, expected.left, framesPlayed);
    compareSample ("right", actual.second, expected.right, framesPlayed);
    ++framesPlayed;
    return actual;
}

void DifferentialPlayer::playNoise (int numFrames, std::span<const int> blockSizes)
{
    std::vector<float> left, right;

    for (std::size_t block = 0; numFrames > 0 && isBitExact(); ++block)
    {
        const auto size = std::min (blockSizes[block % blockSizes.size()], numFrames);
        // A block of no frames has buffers too.
        left.resize ((std::size_t) std::max (size, 1));
        right.resize (left.size());

        for (std::size_t n = 0; n < (std::size_t) size; ++n)
        {
            left[n] = (float) noise.between (-1.0, 1.0);
            right[n] = (float) noise.between (-1.0, 1.0);
        }

        process (left.data(), channels == Channels::stereo ? right.data() : nullptr, size);
        compareFields();
        numFrames -= size;
    }
}

//======================================================================================================================
void DifferentialPlayer::note (const std::string& text)
{
    if (! isBitExact())
        return;

    // 0 frames played: before the first block.
    firstDifference = text + ", after " + std::to_string (framesPlayed) + " frames";
}

void DifferentialPlayer::compareSample (const char* channel, float actual, float expected, std::int64_t frame)
{
    if (isSameValue (actual, expected) || ! isBitExact())
        return;

    std::ostringstream text;
    text << std::hexfloat << "frame " << frame << ", " << channel << ": plug-in " << actual << ", reference engine "
         << expected;
    note (text.str());
}

template <typename Value>
void DifferentialPlayer::compare (const char* name, Value actual, Value expected, int index, int channel)
{
    if (isSameValue (actual, expected) || ! isBitExact())
        return;

    std::ostringstream text;
    text << std::hexfloat << place << name;

    if (index >= 0)
        text << "[" << index << "]";

    if (channel >= 0)
        text << (channel == 0 ? " left" : " right");

    text << ": plug-in " << +actual << ", reference engine " << +expected;
    note (text.str());
}

void DifferentialPlayer::comparePair (const char* name, const StereoPair& actual, double expectedLeft,
                                      double expectedRight, int index)
{
    compare (name, actual.left(), expectedLeft, index, 0);
    compare (name, actual.right(), expectedRight, index, 1);
}

void DifferentialPlayer::compareFields()
{
    if (! isBitExact())
        return;

    place.clear();
    compare ("controlUpdatePending", plugIn.controlUpdatePending, referenceEngine.controlUpdatePending);
    compare ("framesSinceRequest", plugIn.framesSinceRequest, referenceEngine.framesSinceRequest);
    compare ("hostSampleRate", plugIn.hostSampleRate, referenceEngine.hostSampleRate);
    compare ("queries of the transport", plugInHost.queries, referenceHost.queries);
    compare ("hpPoles", plugIn.hpPoles, referenceEngine.hpPoles);
    compare ("lpPoles", plugIn.lpPoles, referenceEngine.lpPoles);
    compare ("hpPeakBandwidth", plugIn.hpPeakBandwidth, referenceEngine.hpPeakBandwidth);
    compare ("lpPeakBandwidth", plugIn.lpPeakBandwidth, referenceEngine.lpPeakBandwidth);
    compare ("hpResonance", plugIn.hpResonance, referenceEngine.hpResonance);
    compare ("lpResonance", plugIn.lpResonance, referenceEngine.lpResonance);

    for (int i = 0; i < 2; ++i)
    {
        compare ("wobblePhase", plugIn.wobblePhase[(std::size_t) i], referenceEngine.wobblePhase[i], i);
        compare ("wobbleStep", plugIn.wobbleStep[(std::size_t) i], referenceEngine.wobbleStep[i], i);
        compare ("wobbleDepth", plugIn.wobbleDepth[(std::size_t) i], referenceEngine.wobbleDepth[i], i);
        compareLfo (i);
    }

    for (int step = 0; step < ParameterSet::numSteps; ++step)
        compare ("stepLit", plugIn.stepLit[(std::size_t) step], referenceEngine.stepLit[step], step);

    using reference::Index::hpFreq, reference::Index::lpFreq, reference::Index::hpReso, reference::Index::lpReso;
    const auto& parameters = plugIn.parameters;
    compare ("seen hp_freq", parameters.hpFreq->lastSeenValue, referenceEngine.lastSeenValue[hpFreq]);
    compare ("seen lp_freq", parameters.lpFreq->lastSeenValue, referenceEngine.lastSeenValue[lpFreq]);
    compare ("seen hp_reso", parameters.hpReso->lastSeenValue, referenceEngine.lastSeenValue[hpReso]);
    compare ("seen lp_reso", parameters.lpReso->lastSeenValue, referenceEngine.lastSeenValue[lpReso]);

    compareSlew ("hpFreqSlew.", plugIn.hpFreqSlew, referenceEngine.hpFreqSlew);
    compareSlew ("lpFreqSlew.", plugIn.lpFreqSlew, referenceEngine.lpFreqSlew);
    compareSlew ("hpResoSlew.", plugIn.hpResoSlew, referenceEngine.hpResoSlew);
    compareSlew ("lpResoSlew.", plugIn.lpResoSlew, referenceEngine.lpResoSlew);
    compareFilter ("hpFilter.", *plugIn.hpFilter, referenceEngine.hpFilter);
    compareFilter ("lpFilter.", *plugIn.lpFilter, referenceEngine.lpFilter);
    compareLadder ("hpLadder.", *plugIn.hpLadder, referenceEngine.hpLadder);
    compareLadder ("lpLadder.", *plugIn.lpLadder, referenceEngine.lpLadder);
    comparePeak ("hpResonator.", *plugIn.hpResonator, referenceEngine.hpResonator);
    comparePeak ("lpResonator.", *plugIn.lpResonator, referenceEngine.lpResonator);
}

void DifferentialPlayer::compareSlew (const char* name, const SlewValue& actual, const reference::SlewValue& expected)
{
    place = name;
    compare ("mode", actual.mode, expected.mode);
    compare ("target", actual.target, expected.target);
    compare ("current", actual.current, expected.current);
    compare ("step", actual.step, expected.step);
}

void DifferentialPlayer::compareLfo (int index)
{
    const auto& actual = plugIn.lfo[(std::size_t) index];
    const auto& expected = referenceEngine.lfo[index];
    compareSlew (index == 0 ? "lfo[0].outputSlew." : "lfo[1].outputSlew.", actual.outputSlew, expected.outputSlew);

    place = index == 0 ? "lfo[0]." : "lfo[1].";
    compare ("shape", actual.shape, expected.shape);
    compare ("amplitude", actual.amplitude, expected.amplitude);
    compare ("referencePhase", actual.referencePhase, expected.referencePhase);
    compare ("phaseA", actual.phaseA, expected.phaseA);
    compare ("phaseB", actual.phaseB, expected.phaseB);
    compare ("phaseC", actual.phaseC, expected.phaseC);
    compare ("phaseStepA", actual.phaseStepA, expected.phaseStepA);
    compare ("phaseStepB", actual.phaseStepB, expected.phaseStepB);
    compare ("phaseStepC", actual.phaseStepC, expected.phaseStepC);
    compare ("walkValue", actual.walkValue, expected.walkValue);
    compare ("walkStep", actual.walkStep, expected.walkStep);
    compare ("curveExponent", actual.curveExponent, expected.curveExponent);
    compare ("followReference", actual.followReference, expected.followReference);
    place.clear();
}

void DifferentialPlayer::compareFilter (const char* name, const ButterworthFilter& actual,
                                        const reference::ButterworthFilter& expected)
{
    place = name;
    compare ("isHighpass", actual.isHighpass, expected.isHighpass);
    compare ("numSections", actual.numSections, expected.numSections);
    compare ("hasFirstOrderSection", actual.hasFirstOrderSection, expected.hasFirstOrderSection);
    compare ("limitedCutoff", actual.limitedCutoff, expected.limitedCutoff);
    compare ("firstOrderForward", actual.firstOrderForward, expected.firstOrderForward);
    compare ("firstOrderFeedback", actual.firstOrderFeedback, expected.firstOrderFeedback);

    for (unsigned i = 0; i < ButterworthFilter::maxSections; ++i)
    {
        const auto index = (int) i;
        comparePair ("w1", actual.w1[i], expected.w1Left[i], expected.w1Right[i], index);
        comparePair ("w2", actual.w2[i], expected.w2Left[i], expected.w2Right[i], index);

        // The coefficients of a section that is not in use have no effect.
        if (i < expected.numSections)
        {
            compare ("sectionGain", actual.sectionGain[i], expected.sectionGain[i], index);
            compare ("feedback1", actual.feedback1[i], expected.feedback1[i], index);
            compare ("feedback2", actual.feedback2[i], expected.feedback2[i], index);
        }
    }

    comparePair ("firstOrderOutput", actual.firstOrderOutput, expected.firstOrderOutputLeft,
                 expected.firstOrderOutputRight);
    comparePair ("firstOrderInput", actual.firstOrderInput, expected.firstOrderInputLeft,
                 expected.firstOrderInputRight);
}

void DifferentialPlayer::compareLadder (const char* name, const GrungeLadder& actual,
                                        const reference::GrungeLadder& expected)
{
    place = name;
    compare ("isHighpass", actual.isHighpass, expected.isHighpass);
    compare ("numStages", actual.numStages, expected.numStages);
    compare ("poleCoefficient", actual.poleCoefficient, expected.poleCoefficient);
    compare ("inputCoefficient", actual.inputCoefficient, expected.inputCoefficient);
    compare ("grunge", actual.grunge, expected.grunge);

    for (unsigned i = 0; i < GrungeLadder::maxStages; ++i)
    {
        comparePair ("state", actual.state[i], expected.stateLeft[i], expected.stateRight[i], (int) i);
    }
}

void DifferentialPlayer::comparePeak (const char* name, const ResonancePeak& actual,
                                      const reference::ResonancePeak& expected)
{
    place = name;
    compare ("designed", actual.designed, expected.designed);
    compare ("b0", actual.b0, expected.b0);
    compare ("b1", actual.b1, expected.b1);
    compare ("b2", actual.b2, expected.b2);
    compare ("a0", actual.a0, expected.a0);
    compare ("a1", actual.a1, expected.a1);
    compare ("a2", actual.a2, expected.a2);
    comparePair ("input1", actual.delayLine.input1, expected.input1Left, expected.input1Right);
    comparePair ("input2", actual.delayLine.input2, expected.input2Left, expected.input2Right);
    comparePair ("output1", actual.delayLine.output1, expected.output1Left, expected.output1Right);
    comparePair ("output2", actual.delayLine.output2, expected.output2Left, expected.output2Right);
}
