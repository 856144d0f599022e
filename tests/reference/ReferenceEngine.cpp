// SPDX-License-Identifier: AGPL-3.0-or-later
#include "reference/ReferenceEngine.h"

#include "reference/ReferenceMath.h"

#include <cmath>
#include <limits>

#if defined(__SSE2__) || defined(_M_X64)
#include <xmmintrin.h>
#endif

namespace reference
{

namespace
{
// Sets flush-to-zero and denormals-are-zero during its lifetime.
class DenormalsOff
{
public:
#if defined(__SSE2__) || defined(_M_X64)
    DenormalsOff() : old (_mm_getcsr()) { _mm_setcsr (old | 0x8040u); }
    ~DenormalsOff() { _mm_setcsr (old); }

private:
    unsigned old;
#elif defined(__aarch64__)
    DenormalsOff()
    {
        asm volatile("mrs %0, fpcr" : "=r"(old));
        const std::uint64_t flushing = old | (std::uint64_t { 1 } << 24);
        asm volatile("msr fpcr, %0" : : "r"(flushing));
    }
    ~DenormalsOff() { asm volatile("msr fpcr, %0" : : "r"(old)); }

private:
    std::uint64_t old = 0;
#else
    DenormalsOff() {}
    ~DenormalsOff() {}
#endif
};

// Between the two limits; NaN stays.
float clampKeepingNan (float x, float low, float high)
{
    if (x < low)
        return low;

    if (x > high)
        return high;

    return x;
}

// 0 to 1; NaN becomes 0.
float clampTarget (float x)
{
    if (x > 0.0f)
    {
        if (x > 1.0f)
            return 1.0f;

        return x;
    }

    return 0.0f;
}
} // namespace

Engine::Engine()
{
    const auto table = parameterTable();

    for (int i = 0; i < Index::count; ++i)
    {
        value[(std::size_t) i] = table[(std::size_t) i].defaultPosition;
        lastSeenValue[(std::size_t) i] = -1.0E20f;
    }

    barLengths = { 64.0f, 32.0f,
                   16.0f, 12.0f,
                   8.0f,  6.0f,
                   4.0f,  3.0f,
                   2.0f,  1.5f,
                   1.0f,  0.6666666865348816f,
                   0.5f,  0.3333333432674408f,
                   0.25f, 0.1666666716337204f,
                   0.125f };

    controlUpdatePending = true;
    framesSinceRequest = 0;
}

std::span<const ParameterInfo> Engine::parameterTable() { return reference::parameterTable(); }

void Engine::setParameter (int index, float position)
{
    float stored = position;

    if (index != Index::link)
    {
        // The host clamps, and the mapping onto the range 0 to 1 turns -0 into 0.
        stored = 0.0f + (1.0f - 0.0f) * clampKeepingNan (position, 0.0f, 1.0f);
    }

    value[(std::size_t) index] = stored;
}

float Engine::getParameter (int index) const { return value[(std::size_t) index]; }

int Engine::getChoiceIndex (int index) const
{
    return choiceIndexOf (parameterTable()[(std::size_t) index], getParameter (index));
}

void Engine::setSampleRate (double rateOfHost) { hostRate = rateOfHost; }

void Engine::prepareToPlay() { requestUpdate(); }

void Engine::requestUpdate()
{
    controlUpdatePending = true;
    framesSinceRequest = 0;
}

void Engine::seedLfo (int index, std::uint32_t seed) { lfo[index].rng.seed (seed); }

float Engine::clampFirstChannel (float a)
{
    if (-30.0f > a)
        return -30.0f;

    return a < 20.0f ? a : 20.0f;
}

float Engine::clampSecondChannel (float b)
{
    if (-20.0f > b)
        return -20.0f;

    if (b > 20.0f)
        return 20.0f;

    return b;
}

void Engine::process (float* left, float* rightOrNull, int numFrames)
{
    const DenormalsOff denormalsOff;
    runFrames (left, rightOrNull, numFrames);
}

void Engine::runFrames (float* left, float* rightOrNull, int numFrames)
{
    for (int frame = 0; frame < numFrames; ++frame)
    {
        const float a = clampFirstChannel (left[frame]);
        const float l = a;
        float r = a;

        if (rightOrNull != nullptr)
            r = clampSecondChannel (rightOrNull[frame]);

        if (framesSinceRequest < std::numeric_limits<std::int32_t>::max())
            framesSinceRequest = framesSinceRequest + 1;

        controlCounter = (controlCounter + 1u) & 0xFFFFu;

        if (controlUpdatePending || controlCounter == 0u)
        {
            controlUpdatePending = false;
            updateControlRate();
        }

        const Frame result = processFrame (l, r);
        left[frame] = result.left;

        if (rightOrNull != nullptr)
            rightOrNull[frame] = result.right;

        ++frameCount;
    }
}

//======================================================================================================================
// The tick.

void Engine::updateControlRate()
{
    ++tickCount;

    // The sample rate: the last plausible one counts.
    if (hostRate > 999.0 && hostRate < 10000000001.0)
        hostSampleRate = hostRate;

    // The rate of the frames.
    rate = (double) oversamplingFactor * hostSampleRate;

    // The sums start at zero, and the host tells its transport.
    active = false;
    hpMod = 0.0f;
    lpMod = 0.0f;
    hpResoMod = 0.0f;
    lpResoMod = 0.0f;
    readTransport();

    // For each LFO: wobble, tempo lock and curve.
    wobbleAndLock (0);
    wobbleAndLock (1);

    // Poles and bandwidths of the slopes.
    takeSlopes();

    // The ten steps of the Frequencer.
    evaluateSteps();

    // The LFOs move, and their routes add to the sums.
    advanceAndRoute (0);
    advanceAndRoute (1);

    // How far each slew goes in this tick: a part of its distance to the target of the tick before.
    setSlewSteps();

    // The new targets, which the slews follow from the next tick on.
    setTargets();

    // The slews move, and their values become hertz and amounts.
    advanceAndMap();

    // The filters of the selected family are designed.
    designFilters();

    // The next tick is asked for while anything moves.
    decideWake();
}

Engine::Query Engine::queryTransport (bool& hasPlayHead)
{
    Query query;
    hasPlayHead = false;

    if (! transport)
        return query;

    query.position = transport();
    hasPlayHead = query.position.hasPlayHead;

    if (hasPlayHead)
        ++queryCount;

    query.succeeded = hasPlayHead && query.position.hasPosition;
    return query;
}

void Engine::readTransport()
{
    ppq = 0.0;
    bpm = 0.0;

    bool hasPlayHead = false;
    const Query query = queryTransport (hasPlayHead);

    if (query.succeeded)
    {
        ppq = query.position.ppqPosition;
        bpm = query.position.bpm;
    }

    transportAbsent = ! hasPlayHead || ! query.succeeded || ppq == 0.0;

    if (transportAbsent)
    {
        lfo[0].resetPhases();
        lfo[1].resetPhases();
    }
}

void Engine::wobbleAndLock (int i)
{
    const int s = getChoiceIndex (Index::lfoSync (i));
    const float v = getParameter (Index::lfoSpeed (i));
    const float x = (float) (i ^ 0x37) * 0.001f;

    if (s == 1)
    {
        const float hertz = exponential ((x + 0.2297f) * v * 5.7037826f - 4.6051702f);
        wobbleStep[i] = (float) ((double) hertz / rate);
        wobbleDepth[i] = 0.01f;
    }
    else if (s == 2)
    {
        const float hertz = exponential ((x + 0.3297f) * v * 5.857933f - 4.6051702f);
        wobbleStep[i] = (float) ((double) hertz / rate);
        wobbleDepth[i] = 0.12f;
    }
    else
    {
        wobbleStep[i] = 0.0f;
        wobbleDepth[i] = 0.0f;
    }

    if (s == 3)
    {
        const int k = getChoiceIndex (Index::lfoMode (i));
        const float L = barLengths[(std::size_t) k];
        const float phase = getParameter (Index::lfoPhase (i));

        double wanted = ppq / (double) L + 0.5 - (double) phase;
        wanted = wanted - std::floor (wanted);
        const float t = (float) wanted;

        float d = lfo[i].phaseA - t;
        d = d - std::floor (d);

        if (d >= 0.5f)
            d = 1.0f - d;

        if (d >= 0.01f / L)
        {
            lfo[i].referencePhase = t;
            lfo[i].phaseA = t;
            lfo[i].phaseB = t;
            lfo[i].phaseC = t;
            lfo[i].walkValue = 0.0f;
        }
    }

    const float bipolarCurve = getParameter (Index::lfoCurve (i)) * 2.0f - 1.0f;
    const float g = (float) ((double) bipolarCurve * 1.7);
    lfo[i].curveExponent = 1.0f / exponential (g);
}

void Engine::takeSlopes()
{
    const int hpIndex = getChoiceIndex (Index::hpMode);

    if (hpIndex == 1)
    {
        hpPoles = 1;
        hpPeakBandwidth = 2.0f;
    }
    else if (hpIndex == 2)
    {
        hpPoles = 2;
        hpPeakBandwidth = 1.25f;
    }
    else if (hpIndex == 3)
    {
        hpPoles = 4;
        hpPeakBandwidth = 0.707f;
    }
    else if (hpIndex == 4)
    {
        hpPoles = 8;
        hpPeakBandwidth = 0.5f;
    }
    else
    {
        hpPoles = 0;
        hpPeakBandwidth = 3.0f;
    }

    const int lpIndex = getChoiceIndex (Index::lpMode);

    if (lpIndex == 1)
    {
        lpPoles = 1;
        lpPeakBandwidth = 2.0f;
    }
    else if (lpIndex == 2)
    {
        lpPoles = 2;
        lpPeakBandwidth = 1.25f;
    }
    else if (lpIndex == 3)
    {
        lpPoles = 4;
        lpPeakBandwidth = 0.707f;
    }
    else if (lpIndex == 4)
    {
        lpPoles = 8;
        lpPeakBandwidth = 0.5f;
    }
    else
    {
        lpPoles = 0;
        lpPeakBandwidth = 3.0f;
    }
}

void Engine::evaluateSteps()
{
    const ParameterInfo& offsetInfo = parameterTable()[Index::seqOffs];
    const float o = (offsetInfo.maxValue - offsetInfo.minValue) * getParameter (Index::seqOffs) + offsetInfo.minValue;
    const double pos = (ppq + 0.01) + (double) o;

    float hpSum = 0.0f;
    float lpSum = 0.0f;
    double scale = 1.0;

    for (int j = 0; j < 10; ++j)
    {
        const double y = pos * scale;
        const double f = y - std::floor (y);
        const bool on = f < 0.5;
        stepLit[j] = on;

        const float h = getParameter (Index::seqHpf (j)) - 0.5f;
        const float l = getParameter (Index::seqLpf (j)) - 0.5f;

        if (h < -0.001f || h > 0.001f || l < -0.001f || l > 0.001f)
        {
            active = true;

            if (on)
            {
                hpSum = hpSum + std::abs (h) * h * 20.0f;
                lpSum = lpSum + std::abs (l) * l * 20.0f;
            }
        }

        scale = scale * 0.5;
    }

    hpMod = clampKeepingNan (hpSum, -2.0f, 2.0f);
    lpMod = clampKeepingNan (lpSum, -2.0f, 2.0f);
}

void Engine::advanceAndRoute (int i)
{
    // The wobble moves. It starts again at zero instead of wrapping.
    wobblePhase[i] = wobblePhase[i] + wobbleStep[i];

    if (wobblePhase[i] >= 1.0f)
        wobblePhase[i] = 0.0f;

    // The slew behind the output moves.
    lfo[i].outputSlew.advance();

    // The three phases move.
    lfo[i].advancePhases();

    // The Brownian shape walks.
    if (lfo[i].shape == 5)
    {
        lfo[i].walk();
        lfo[i].referencePhase = lfo[i].referencePhase + lfo[i].phaseStepA;
    }

    // A reserved shape follows the bars.
    lfo[i].follow();

    // All phases wrap.
    lfo[i].wrapPhases();

    // The wave.
    const float out = lfo[i].render();

    // The four routes to the filters. A depth inside the dead band is added too, but keeps nothing awake.
    float depth = getParameter (Index::lfoToHpf (i)) * 2.0f - 1.0f;

    if ((double) depth < -0.01 || (double) depth > 0.01)
        active = true;

    hpMod = hpMod + depth * out;

    depth = getParameter (Index::lfoToLpf (i)) * 2.0f - 1.0f;

    if ((double) depth < -0.01 || (double) depth > 0.01)
        active = true;

    lpMod = lpMod + depth * out;

    depth = getParameter (Index::lfoToHpr (i)) * 2.0f - 1.0f;

    if ((double) depth < -0.01 || (double) depth > 0.01)
        active = true;

    hpResoMod = hpResoMod + depth * out;

    depth = getParameter (Index::lfoToLpr (i)) * 2.0f - 1.0f;

    if ((double) depth < -0.01 || (double) depth > 0.01)
        active = true;

    lpResoMod = lpResoMod + depth * out;

    // The other LFO changes the speed by the square of its wave.
    float m = 1.0f;
    const int o = (i + 1) % 2;
    const float d = getParameter (Index::lfoToOther (o)) * 2.0f - 1.0f;

    if (d < -0.01f || d > 0.01f)
    {
        const float t = 1.0f + lfo[o].render() * d * 0.5f;
        m = t * t;
    }

    // So does the wobble. The comparison is strict: a depth of exactly 0.01 has no effect.
    if (wobbleDepth[i] > 0.01f)
    {
        const float w = triangleOf (wobblePhase[i]);
        const float t = w * wobbleDepth[i] + 1.0f;
        m = m * (t * t);
    }

    // The limits of the speed.
    if (m < 0.01f)
        m = 0.01f;

    if (m > 1.99f)
        m = 1.99f;

    // In tempo the speed comes from the bars, and nothing changes it.
    float f = 0.0f;

    if (getChoiceIndex (Index::lfoSync (i)) == 3)
    {
        const int k = getChoiceIndex (Index::lfoMode (i));
        const float L = barLengths[(std::size_t) k];
        m = 1.0f;
        f = (float) (bpm / (double) L * 0.016666666666666666);
    }

    // The speed becomes phase steps for the next tick.
    configureLfo (i, f, (float) rate, m);
}

void Engine::configureLfo (int lfoIndex, float frequency, float rateAsFloat, float speedMultiplier)
{
    float f = frequency;
    const float m = speedMultiplier;

    if (f == 0.0f)
    {
        const float v = getParameter (Index::lfoSpeed (lfoIndex));
        f = exponential (v * m * m * 6.9077554f - 3.912023f);
    }

    lfoFrequency[lfoIndex] = f;
    lfo[lfoIndex].amplitude = 1.0f;

    const int position = getChoiceIndex (Index::lfoShape (lfoIndex));

    if (position >= 0 && position <= 5)
    {
        lfo[lfoIndex].setRate (position, rateAsFloat, f);
    }
    else if (position == 6)
    {
        lfo[lfoIndex].setRate (6, rateAsFloat, 0.0f);
        lockLfosToBars (rateAsFloat, 1.0f);
    }
    else if (position == 7)
    {
        lfo[lfoIndex].setRate (7, rateAsFloat, 0.0f);
        lockLfosToBars (rateAsFloat, 16.0f);
    }
    else
    {
        lfo[lfoIndex].setRate (0, rateAsFloat, f);
    }
}

void Engine::lockLfosToBars (float rateAsFloat, float barMultiple)
{
    bool hasPlayHead = false;
    const Query query = queryTransport (hasPlayHead);

    if (! hasPlayHead || ! query.succeeded)
        return;

    const double position = query.position.ppqPosition;
    const float tempo = (float) query.position.bpm;
    const float b = (float) query.position.timeSigNumerator / (float) query.position.timeSigDenominator;

    for (int i = 0; i < 2; ++i)
    {
        const int k = getChoiceIndex (Index::lfoMode (i));
        const float span = barMultiple * barLengths[(std::size_t) k];

        double t = position / (double) b / (double) span;
        t = t - std::floor (t);

        if (t > 0.0 && t < 1.0)
        {
            lfo[i].referencePhase = (float) t;
            lfo[i].followReference = true;
        }

        const float period = rateAsFloat * 60.0f * b * span / tempo;
        const double step = period == 0.0f ? 0.0 : 1.0 / (double) period;
        lfo[i].phaseStepA = (float) step;
        lfo[i].phaseStepB = (float) (step * 0.5);
        lfo[i].phaseStepC = (float) (step * 2.0);
    }
}

void Engine::setSlewSteps()
{
    const float tau = active ? 0.004f : 0.02f;
    const float narrowRate = (float) rate;

    hpFreqSlew.mode = 1;
    lpFreqSlew.mode = 1;
    hpResoSlew.mode = 1;
    lpResoSlew.mode = 1;

    if (narrowRate > 0.0f)
    {
        hpFreqSlew.step = std::abs (hpFreqSlew.target - hpFreqSlew.current) / (narrowRate * tau);
        lpFreqSlew.step = std::abs (lpFreqSlew.target - lpFreqSlew.current) / (narrowRate * tau);
        hpResoSlew.step = std::abs (hpResoSlew.target - hpResoSlew.current) / (narrowRate * tau);
        lpResoSlew.step = std::abs (lpResoSlew.target - lpResoSlew.current) / (narrowRate * tau);
    }
    else
    {
        hpFreqSlew.step = 1E+20f;
        lpFreqSlew.step = 1E+20f;
        hpResoSlew.step = 1E+20f;
        lpResoSlew.step = 1E+20f;
    }
}

void Engine::setTargets()
{
    hpFreqSlew.target = clampTarget (hpMod * 0.5f + getParameter (Index::hpFreq));
    lpFreqSlew.target = clampTarget (lpMod * 0.5f + getParameter (Index::lpFreq));
    hpResoSlew.target = clampTarget (getParameter (Index::hpReso) + hpResoMod);
    lpResoSlew.target = clampTarget (getParameter (Index::lpReso) + lpResoMod);
}

void Engine::advanceAndMap()
{
    hpFreqSlew.advance();
    hpHz = exponential (freqExpScale * hpFreqSlew.current + freqExpOffset);

    lpFreqSlew.advance();
    lpHz = exponential (freqExpScale * lpFreqSlew.current + freqExpOffset);

    hpResoSlew.advance();
    const float c = hpResoSlew.current;
    const float cube = c * c * c;
    hpResonance = cube * cube * 10.0f;

    lpResoSlew.advance();
    const float c2 = lpResoSlew.current;
    const float cube2 = c2 * c2 * c2;
    lpResonance = cube2 * cube2 * 10.0f;
}

void Engine::designFilters()
{
    if (getChoiceIndex (Index::filtMode) == 1)
    {
        hpLadder.configure (hpPoles, true, (double) hpHz, (double) hpResonance, 15.0, rate);
        lpLadder.configure (lpPoles, false, (double) lpHz, (double) lpResonance, 80.0, rate);
        return;
    }

    hpFilter.design ((unsigned) hpPoles, true, (double) hpHz, rate);
    lpFilter.design ((unsigned) lpPoles, false, (double) lpHz, rate);

    if (hpResonance > 1E-07f)
        hpResonator.design (rate, (double) hpHz, (double) hpPeakBandwidth);

    if (lpResonance > 1E-07f)
        lpResonator.design (rate, (double) lpHz * 0.9, (double) lpPeakBandwidth);
}

void Engine::decideWake()
{
    if (active || std::abs (hpFreqSlew.target - hpFreqSlew.current) > 0.0002f
        || std::abs (hpResoSlew.target - hpResoSlew.current) > 0.0003f
        || std::abs (lpFreqSlew.target - lpFreqSlew.current) > 0.0002f
        || std::abs (lpResoSlew.target - lpResoSlew.current) > 0.0003f)
    {
        controlUpdatePending = true;
        framesSinceRequest = 0;
    }
}

//======================================================================================================================
// The frame.

bool Engine::hasChanged (int index)
{
    const std::size_t i = (std::size_t) index;

    // Written so that NaN differs from everything, itself included.
    if (! (value[i] == lastSeenValue[i]))
    {
        lastSeenValue[i] = value[i];
        return true;
    }

    return false;
}

Engine::Frame Engine::processFrame (float left, float right)
{
    // A frame takes only the first change.
    bool changed = false;

    if (hasChanged (Index::hpFreq))
        changed = true;
    else if (hasChanged (Index::lpFreq))
        changed = true;
    else if (hasChanged (Index::hpReso))
        changed = true;
    else if (hasChanged (Index::lpReso))
        changed = true;

    if (changed)
    {
        controlUpdatePending = true;
        framesSinceRequest = 0;
    }

    double L = (double) left;
    double R = (double) right;

    const int family = getChoiceIndex (Index::filtMode);

    if (family == 0)
    {
        hpFilter.process (L, R);

        if (hpResonance > 1E-07f && hpPoles > 0)
            addResonance (hpResonator, hpResonance, L, R);

        if (lpResonance > 1E-07f && lpPoles > 0)
            addResonance (lpResonator, lpResonance, L, R);

        lpFilter.process (L, R);
    }
    else if (family == 1)
    {
        hpLadder.process (L, R);
        lpLadder.process (L, R);
    }

    Frame result;
    result.left = (float) L;
    result.right = (float) R;
    return result;
}

void Engine::addResonance (ResonancePeak& resonator, float resonance, double& L, double& R)
{
    constexpr double limit = 1.5707963267948966;

    double PL = L;
    double PR = R;
    resonator.process (PL, PR);

    const double excessLeft = PL - L;
    const double excessRight = PR - R;

    double clampedLeft = excessLeft * (double) resonance;

    if (clampedLeft < -limit)
        clampedLeft = -limit;
    else
        clampedLeft = clampedLeft < limit ? clampedLeft : limit;

    double clampedRight = excessRight * (double) resonance;

    if (clampedRight < -limit)
        clampedRight = -limit;
    else
        clampedRight = clampedRight < limit ? clampedRight : limit;

    L = L + sineWithinQuarterTurn (clampedLeft);
    R = R + sineWithinQuarterTurn (clampedRight);
}

} // namespace reference
