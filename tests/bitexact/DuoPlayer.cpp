// SPDX-License-Identifier: AGPL-3.0-or-later
#include "bitexact/DuoPlayer.h"

#include <sstream>
#include <type_traits>

namespace
{
constexpr int largestAnnouncedBlock = 8192;

template <typename Value>
bool sameBits (Value a, Value b)
{
    // Sign and payload of a NaN are the compiler's business; a zero's sign is ours.
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
juce::Optional<juce::AudioPlayHead::PositionInfo> DuoPlayer::Host::getPosition() const
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

reference::Transport DuoPlayer::Host::next() const
{
    if (script)
    {
        if (turn)
            turn (queries);

        return script (queries++);
    }

    // Nobody can ask a play head that is not there.
    if (standing.hasPlayHead)
        ++queries;

    return standing;
}

//======================================================================================================================
DuoPlayer::DuoPlayer (Channels channelsToUse) : channels (channelsToUse)
{
    product.setPlayConfigDetails ((int) channels, (int) channels, 0.0, largestAnnouncedBlock);
    literal.transport = [this] { return literalsHost.next(); };
    setTransport (reference::Transport {});

    // By themselves no two generators walk alike.
    for (int i = 0; i < 2; ++i)
        seedLfo (i, 1u + (unsigned) i);
}

void DuoPlayer::seedLfo (int index, std::uint32_t seed)
{
    product.lfo[(size_t) index].rng.seed (seed);
    literal.seedLfo (index, seed);
}

void DuoPlayer::setParameter (int index, float position)
{
    product.getParameters()[index]->setValue (position);
    literal.setParameter (index, position);
}

void DuoPlayer::setChoice (int index, int choice)
{
    setParameter (index, reference::positionOfChoice (
                             choice, reference::parameterTable()[static_cast<size_t> (index)].stepCount));
}

void DuoPlayer::setSampleRate (double hostRate)
{
    product.setRateAndBufferSizeDetails (hostRate, largestAnnouncedBlock);
    literal.setSampleRate (hostRate);
}

void DuoPlayer::prepareToPlay()
{
    product.prepareToPlay (product.getSampleRate(), largestAnnouncedBlock);
    literal.prepareToPlay();
}

void DuoPlayer::requestUpdate()
{
    product.requestControlUpdate();
    literal.requestUpdate();
}

void DuoPlayer::setTransport (const reference::Transport& transport)
{
    for (auto* host : { &productsHost, &literalsHost })
    {
        host->standing = transport;
        host->script = nullptr;
    }

    product.setPlayHead (transport.hasPlayHead ? &productsHost : nullptr);
}

void DuoPlayer::setTransport (TransportScript script)
{
    for (auto* host : { &productsHost, &literalsHost })
    {
        host->script = script;
        host->queries = 0;
    }

    product.setPlayHead (&productsHost);
}

void DuoPlayer::turnWhileAsked (std::function<std::optional<Turn> (std::int64_t query)> script)
{
    productsHost.turn = [=, this] (std::int64_t query)
    {
        if (const auto turn = script (query))
            product.getParameters()[turn->index]->setValue (turn->position);
    };

    literalsHost.turn = [=, this] (std::int64_t query)
    {
        if (const auto turn = script (query))
            literal.setParameter (turn->index, turn->position);
    };
}

void DuoPlayer::setFramesSinceRequest (std::int32_t frames)
{
    product.framesSinceRequest = frames;
    literal.framesSinceRequest = frames;
}

void DuoPlayer::startAtRest()
{
    using namespace reference;

    const auto rest = [this] (int index, ::SlewValue& ours, reference::SlewValue& theirs)
    { ours.current = ours.target = theirs.current = theirs.target = literal.getParameter (index); };

    rest (Index::hpFreq, product.hpFreqSlew, literal.hpFreqSlew);
    rest (Index::lpFreq, product.lpFreqSlew, literal.lpFreqSlew);
    rest (Index::hpReso, product.hpResoSlew, literal.hpResoSlew);
    rest (Index::lpReso, product.lpResoSlew, literal.lpResoSlew);
}

//======================================================================================================================
void DuoPlayer::process (float* left, float* rightOrNull, int numFrames)
{
    const auto numChannels = (int) channels;
    jassert ((rightOrNull != nullptr) == (channels == Channels::stereo));

    literalLeft.assign (left, left + numFrames);

    if (rightOrNull != nullptr)
        literalRight.assign (rightOrNull, rightOrNull + numFrames);

    float* const pointers[] = { left, rightOrNull };
    juce::AudioBuffer<float> buffer (pointers, numChannels, numFrames);
    product.processBlock (buffer, noMidi);
    literal.process (literalLeft.data(), rightOrNull != nullptr ? literalRight.data() : nullptr, numFrames);

    for (int n = 0; n < numFrames; ++n)
    {
        compareSample ("left", left[n], literalLeft[(size_t) n], framesPlayed + n);

        if (rightOrNull != nullptr)
            compareSample ("right", rightOrNull[n], literalRight[(size_t) n], framesPlayed + n);
    }

    framesPlayed += numFrames;
}

void DuoPlayer::updateControlRate()
{
    const juce::ScopedNoDenormals noDenormals;
    product.updateControlRate();
    literal.updateControlRate();
}

std::pair<float, float> DuoPlayer::processFrame (float left, float right)
{
    const juce::ScopedNoDenormals noDenormals;
    const auto ours = product.processFrame (left, right);
    const auto theirs = literal.processFrame (left, right);
    compareSample ("left", ours.first, theirs.left, framesPlayed);
    compareSample ("right", ours.second, theirs.right, framesPlayed);
    ++framesPlayed;
    return ours;
}

void DuoPlayer::playNoise (int numFrames, std::span<const int> blockSizes)
{
    std::vector<float> left, right;

    for (size_t block = 0; numFrames > 0 && isSame(); ++block)
    {
        const auto size = std::min (blockSizes[block % blockSizes.size()], numFrames);
        // A block of no frames has buffers, too.
        left.resize ((size_t) std::max (size, 1));
        right.resize (left.size());

        for (size_t n = 0; n < (size_t) size; ++n)
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
void DuoPlayer::note (const std::string& text)
{
    if (! isSame())
        return;

    // 0 frames played: before the first block.
    firstDifference = text + ", after " + std::to_string (framesPlayed) + " frames";
}

void DuoPlayer::compareSample (const char* channel, float ours, float theirs, std::int64_t frame)
{
    if (sameBits (ours, theirs) || ! isSame())
        return;

    std::ostringstream text;
    text << std::hexfloat << "frame " << frame << ", " << channel << ": " << ours << " instead of " << theirs;
    note (text.str());
}

template <typename Value>
void DuoPlayer::same (const char* name, Value ours, Value theirs, int index, int channel)
{
    if (sameBits (ours, theirs) || ! isSame())
        return;

    std::ostringstream text;
    text << std::hexfloat << place << name;

    if (index >= 0)
        text << "[" << index << "]";

    if (channel >= 0)
        text << (channel == 0 ? " left" : " right");

    text << ": " << +ours << " instead of " << +theirs;
    note (text.str());
}

void DuoPlayer::samePair (const char* name, const StereoPair& ours, double theirLeft, double theirRight, int index)
{
    same (name, ours.left(), theirLeft, index, 0);
    same (name, ours.right(), theirRight, index, 1);
}

void DuoPlayer::compareFields()
{
    if (! isSame())
        return;

    place.clear();
    same ("controlUpdatePending", product.controlUpdatePending, literal.controlUpdatePending);
    same ("framesSinceRequest", product.framesSinceRequest, literal.framesSinceRequest);
    same ("hostSampleRate", product.hostSampleRate, literal.hostSampleRate);
    same ("queries of the transport", productsHost.queries, literalsHost.queries);
    same ("hpPoles", product.hpPoles, literal.hpPoles);
    same ("lpPoles", product.lpPoles, literal.lpPoles);
    same ("hpPeakBandwidth", product.hpPeakBandwidth, literal.hpPeakBandwidth);
    same ("lpPeakBandwidth", product.lpPeakBandwidth, literal.lpPeakBandwidth);
    same ("hpResonance", product.hpResonance, literal.hpResonance);
    same ("lpResonance", product.lpResonance, literal.lpResonance);

    for (int i = 0; i < 2; ++i)
    {
        same ("wobblePhase", product.wobblePhase[(size_t) i], literal.wobblePhase[i], i);
        same ("wobbleStep", product.wobbleStep[(size_t) i], literal.wobbleStep[i], i);
        same ("wobbleDepth", product.wobbleDepth[(size_t) i], literal.wobbleDepth[i], i);
        compareLfo (i);
    }

    for (int step = 0; step < ParameterSet::numSteps; ++step)
        same ("stepLit", product.stepLit[(size_t) step], literal.stepLit[step], step);

    using reference::Index::hpFreq, reference::Index::lpFreq, reference::Index::hpReso, reference::Index::lpReso;
    const auto& parameters = product.parameters;
    same ("seen hp_freq", parameters.hpFreq->lastSeenValue, literal.lastSeenValue[hpFreq]);
    same ("seen lp_freq", parameters.lpFreq->lastSeenValue, literal.lastSeenValue[lpFreq]);
    same ("seen hp_reso", parameters.hpReso->lastSeenValue, literal.lastSeenValue[hpReso]);
    same ("seen lp_reso", parameters.lpReso->lastSeenValue, literal.lastSeenValue[lpReso]);

    compareSlew ("hpFreqSlew.", product.hpFreqSlew, literal.hpFreqSlew);
    compareSlew ("lpFreqSlew.", product.lpFreqSlew, literal.lpFreqSlew);
    compareSlew ("hpResoSlew.", product.hpResoSlew, literal.hpResoSlew);
    compareSlew ("lpResoSlew.", product.lpResoSlew, literal.lpResoSlew);
    compareFilter ("hpFilter.", *product.hpFilter, literal.hpFilter);
    compareFilter ("lpFilter.", *product.lpFilter, literal.lpFilter);
    compareLadder ("hpLadder.", *product.hpLadder, literal.hpLadder);
    compareLadder ("lpLadder.", *product.lpLadder, literal.lpLadder);
    comparePeak ("hpResonator.", *product.hpResonator, literal.hpResonator);
    comparePeak ("lpResonator.", *product.lpResonator, literal.lpResonator);
}

void DuoPlayer::compareSlew (const char* name, const SlewValue& ours, const reference::SlewValue& theirs)
{
    place = name;
    same ("mode", ours.mode, theirs.mode);
    same ("target", ours.target, theirs.target);
    same ("current", ours.current, theirs.current);
    same ("step", ours.step, theirs.step);
}

void DuoPlayer::compareLfo (int index)
{
    const auto& ours = product.lfo[(size_t) index];
    const auto& theirs = literal.lfo[index];
    compareSlew (index == 0 ? "lfo[0].outputSlew." : "lfo[1].outputSlew.", ours.outputSlew, theirs.outputSlew);

    place = index == 0 ? "lfo[0]." : "lfo[1].";
    same ("shape", ours.shape, theirs.shape);
    same ("amplitude", ours.amplitude, theirs.amplitude);
    same ("referencePhase", ours.referencePhase, theirs.referencePhase);
    same ("phaseA", ours.phaseA, theirs.phaseA);
    same ("phaseB", ours.phaseB, theirs.phaseB);
    same ("phaseC", ours.phaseC, theirs.phaseC);
    same ("phaseStepA", ours.phaseStepA, theirs.phaseStepA);
    same ("phaseStepB", ours.phaseStepB, theirs.phaseStepB);
    same ("phaseStepC", ours.phaseStepC, theirs.phaseStepC);
    same ("walkValue", ours.walkValue, theirs.walkValue);
    same ("walkStep", ours.walkStep, theirs.walkStep);
    same ("curveExponent", ours.curveExponent, theirs.curveExponent);
    same ("followReference", ours.followReference, theirs.followReference);
    place.clear();
}

void DuoPlayer::compareFilter (const char* name, const ButterworthFilter& ours,
                               const reference::ButterworthFilter& theirs)
{
    place = name;
    same ("isHighpass", ours.isHighpass, theirs.isHighpass);
    same ("numSections", ours.numSections, theirs.numSections);
    same ("hasFirstOrderSection", ours.hasFirstOrderSection, theirs.hasFirstOrderSection);
    same ("limitedCutoff", ours.limitedCutoff, theirs.limitedCutoff);
    same ("firstOrderForward", ours.firstOrderForward, theirs.firstOrderForward);
    same ("firstOrderFeedback", ours.firstOrderFeedback, theirs.firstOrderFeedback);

    for (unsigned i = 0; i < ButterworthFilter::maxSections; ++i)
    {
        const auto index = (int) i;
        samePair ("w1", ours.w1[i], theirs.w1Left[i], theirs.w1Right[i], index);
        samePair ("w2", ours.w2[i], theirs.w2Left[i], theirs.w2Right[i], index);

        // What stands in the coefficients of a section that is not in use can be heard by nobody.
        if (i < theirs.numSections)
        {
            same ("sectionGain", ours.sectionGain[i], theirs.sectionGain[i], index);
            same ("feedback1", ours.feedback1[i], theirs.feedback1[i], index);
            same ("feedback2", ours.feedback2[i], theirs.feedback2[i], index);
        }
    }

    samePair ("firstOrderOutput", ours.firstOrderOutput, theirs.firstOrderOutputLeft, theirs.firstOrderOutputRight);
    samePair ("firstOrderInput", ours.firstOrderInput, theirs.firstOrderInputLeft, theirs.firstOrderInputRight);
}

void DuoPlayer::compareLadder (const char* name, const GrungeLadder& ours, const reference::GrungeLadder& theirs)
{
    place = name;
    same ("isHighpass", ours.isHighpass, theirs.isHighpass);
    same ("numStages", ours.numStages, theirs.numStages);
    same ("poleCoefficient", ours.poleCoefficient, theirs.poleCoefficient);
    same ("inputCoefficient", ours.inputCoefficient, theirs.inputCoefficient);
    same ("grunge", ours.grunge, theirs.grunge);

    for (unsigned i = 0; i < GrungeLadder::maxStages; ++i)
    {
        samePair ("state", ours.state[i], theirs.stateLeft[i], theirs.stateRight[i], (int) i);
    }
}

void DuoPlayer::comparePeak (const char* name, const ResonancePeak& ours, const reference::ResonancePeak& theirs)
{
    place = name;
    same ("designed", ours.designed, theirs.designed);
    same ("b0", ours.b0, theirs.b0);
    same ("b1", ours.b1, theirs.b1);
    same ("b2", ours.b2, theirs.b2);
    same ("a0", ours.a0, theirs.a0);
    same ("a1", ours.a1, theirs.a1);
    same ("a2", ours.a2, theirs.a2);
    samePair ("input1", ours.delayLine.input1, theirs.input1Left, theirs.input1Right);
    samePair ("input2", ours.delayLine.input2, theirs.input2Left, theirs.input2Right);
    samePair ("output1", ours.delayLine.output1, theirs.output1Left, theirs.output1Right);
    samePair ("output2", ours.delayLine.output2, theirs.output2Left, theirs.output2Right);
}
