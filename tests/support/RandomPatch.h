// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "reference/ReferenceEngine.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

/** Seeded random scenarios with the effect: a patch, a host with its transport, rate and blocks, knobs that move, and a
    sound. The same seed gives the same scenario with every compiler and standard library, and any engine can play it. */
namespace scenario
{

struct ParameterMove
{
    int index = 0; // in host order
    float position = 0.0f;
};

/** What the host does before a block, and the block. The transport stands still within it. */
struct Block
{
    int numFrames = 0;
    double hostRate = 48000.0; // 0 for a host that tells none
    bool prepare = false;      // calls prepareToPlay first
    reference::Transport transport;
    std::vector<ParameterMove> moves;
};

struct Scenario
{
    std::uint32_t seed = 0;
    std::string theme;
    std::string transportScript;
    std::string sound;
    bool stereo = true;
    std::array<std::uint32_t, 2> lfoSeeds {};
    std::array<float, reference::Index::count> positions {};
    std::vector<Block> blocks;
    std::vector<float> left;
    std::vector<float> right; // empty in mono
};

struct Options
{
    int numFrames = 8000;
    bool strangeSamples = false;   // NaN and infinity in the sound
    bool strangeTransport = false; // NaN, infinity and time signatures over 0
    bool brownian = true;          // the one shape whose walk has to be seeded
};

struct Output
{
    std::vector<float> left;
    std::vector<float> right; // empty in mono
};

/** The same bits, where any NaN equals any other: sign and payload of a NaN are the compiler's business. */
inline bool sameSample (float a, float b)
{
    if (std::isnan (a) || std::isnan (b))
        return std::isnan (a) && std::isnan (b);

    return std::bit_cast<std::uint32_t> (a) == std::bit_cast<std::uint32_t> (b);
}

/** Index of the first frame that differs, or -1. */
inline int firstDifference (const Output& a, const Output& b)
{
    for (std::size_t n = 0; n < a.left.size(); ++n)
    {
        if (! sameSample (a.left[n], b.left[n]))
            return static_cast<int> (n);

        if (! a.right.empty() && ! sameSample (a.right[n], b.right[n]))
            return static_cast<int> (n);
    }

    return -1;
}

//======================================================================================================================
/** Random numbers by rules of our own, since those of the standard's distributions differ between libraries. */
class Dice
{
public:
    explicit Dice (std::uint32_t seed) : engine (seed) {}

    std::uint32_t word() { return static_cast<std::uint32_t> (engine()); }
    double unit() { return static_cast<double> (word()) / 4294967296.0; }
    bool chance (double probability) { return unit() < probability; }
    int below (int count) { return static_cast<int> (unit() * count); }
    double between (double low, double high) { return low + (high - low) * unit(); }
    float position() { return static_cast<float> (unit()); }

    template <typename Value, std::size_t size>
    Value oneOf (const std::array<Value, size>& values)
    {
        return values[static_cast<std::size_t> (below (static_cast<int> (size)))];
    }

private:
    std::mt19937 engine;
};

//======================================================================================================================
/** Positions of the 55 parameters, weighted towards what people, hosts and edges do. */
class PatchMaker
{
public:
    PatchMaker (Dice& diceToUse, const Options& optionsToUse) : dice (diceToUse), options (optionsToUse) {}

    enum class Theme
    {
        asleep, // nothing modulates, and everything starts next to its target
        still,  // nothing modulates
        oneLfo,
        lfos,
        steps,
        reserved, // one LFO or both on the shapes that have no name
        everything,
        wild, // every position uniform
    };

    Theme drawTheme() { return static_cast<Theme> (dice.below (8)); }

    static const char* nameOf (Theme theme)
    {
        static constexpr const char* names[] = { "asleep", "still",    "one LFO",    "LFOs",
                                                 "steps",  "reserved", "everything", "wild" };
        return names[static_cast<int> (theme)];
    }

    std::array<float, reference::Index::count> draw (Theme theme)
    {
        using namespace reference;
        std::array<float, Index::count> positions {};

        for (int i = 0; i < Index::count; ++i)
            positions[static_cast<std::size_t> (i)] = theme == Theme::wild ? legal (i, dice.position()) : drawFor (i);

        const auto centre = [&] (int index) { positions[static_cast<std::size_t> (index)] = 0.5f; };
        const bool withLfos = theme == Theme::oneLfo || theme == Theme::lfos || theme == Theme::reserved
                              || theme == Theme::everything || theme == Theme::wild;
        const bool withSteps = theme == Theme::steps || theme == Theme::everything || theme == Theme::wild;

        for (int lfo = 0; lfo < 2; ++lfo)
        {
            const bool silenced = ! withLfos || (theme == Theme::oneLfo && lfo == 1);

            for (int route :
                 { Index::lfoToHpf (lfo), Index::lfoToLpf (lfo), Index::lfoToHpr (lfo), Index::lfoToLpr (lfo) })
                if (silenced)
                    centre (route);

            if (silenced && dice.chance (0.5))
                centre (Index::lfoToOther (lfo));

            if (theme == Theme::reserved && (lfo == 0 || dice.chance (0.5)))
                positions[static_cast<std::size_t> (Index::lfoShape (lfo))] = positionOfChoice (6 + dice.below (2), 30);
        }

        for (int step = 0; step < 10; ++step)
        {
            if (! withSteps)
            {
                centre (Index::seqHpf (step));
                centre (Index::seqLpf (step));
            }
        }

        // Within a few milliseconds of everything's rest, which is at 0 before the first block.
        if (theme == Theme::asleep)
        {
            for (int index : { Index::hpFreq, Index::lpFreq, Index::hpReso, Index::lpReso })
                positions[static_cast<std::size_t> (index)] = dice.chance (0.4) ? 0.0f : 0.001f * dice.position();
        }

        return positions;
    }

    /** A new position for one parameter, as the patch itself would draw it. */
    float drawFor (int index)
    {
        using namespace reference;
        const ParameterInfo& info = parameterTable()[static_cast<std::size_t> (index)];

        if (info.isBool)
            return dice.chance (0.5) ? 1.0f : 0.0f;

        if (info.kind == choiceKind)
            return legal (index, drawChoice (info));

        if (index >= Index::seqHpf (0))
            return drawStep();

        if (index == Index::hpFreq || index == Index::lpFreq)
            return drawWithEnds (0.1, 0.1);

        if (index == Index::hpReso || index == Index::lpReso)
            return drawWithEnds (0.3, 0.15);

        if (info.kind == 11)
            return drawBipolar();

        return drawWithEnds (0.1, 0.1);
    }

    /** A small move from where the knob stands, as automation makes it. */
    float nudge (int index, float position, double farthest)
    {
        const float moved = position + static_cast<float> (dice.between (-farthest, farthest));
        return legal (index, std::clamp (moved, 0.0f, 1.0f));
    }

private:
    float drawWithEnds (double atZero, double atOne)
    {
        const double which = dice.unit();

        if (which < atZero)
            return 0.0f;

        return which < atZero + atOne ? 1.0f : dice.position();
    }

    float drawBipolar()
    {
        const double which = dice.unit();

        if (which < 0.35)
            return 0.5f;

        if (which < 0.45) // around the dead band of plus or minus 0.01 in depth, and the curve's of 0.01 in exponent
            return static_cast<float> (dice.between (0.4940, 0.5060));

        if (which < 0.50)
            return dice.oneOf (std::array { 0.495f, 0.505f, 0.4949999f, 0.5050001f });

        if (which < 0.60)
            return dice.chance (0.5) ? 1.0f : 0.0f;

        return dice.position();
    }

    float drawStep()
    {
        const double which = dice.unit();

        if (which < 0.6)
            return 0.5f;

        if (which < 0.7)
            return static_cast<float> (dice.between (0.4980, 0.5020));

        if (which < 0.75)
            return dice.oneOf (std::array { 0.499f, 0.501f, 0.4989999f, 0.5010001f });

        if (which < 0.80)
            return dice.chance (0.5) ? 1.0f : 0.0f;

        return dice.position();
    }

    float drawChoice (const reference::ParameterInfo& info)
    {
        const double which = dice.unit();
        const int numTexts = static_cast<int> (info.texts.size());

        if (which < 0.85)
            return reference::positionOfChoice (dice.below (numTexts), info.stepCount);

        if (which < 0.95)
            return reference::positionOfChoice (dice.below (info.stepCount), info.stepCount);

        return dice.position();
    }

    // Takes the walking shape away where it is not wanted.
    float legal (int index, float position) const
    {
        using namespace reference;

        if (options.brownian || (index != Index::lfoShape (0) && index != Index::lfoShape (1)))
            return position;

        const auto& info = parameterTable()[static_cast<std::size_t> (index)];
        return choiceIndexOf (info, position) == 5 ? positionOfChoice (4, info.stepCount) : position;
    }

    Dice& dice;
    const Options& options;
};

//======================================================================================================================
/** A host's transport from block to block. */
class TransportScript
{
public:
    enum class Kind
    {
        noPlayHead,
        noPosition,
        atZero,
        stopped,
        playing,
        looping,
        jumping,
        preRoll, // from below zero upwards
        zeroTempo,
        tempoRamp,
        changing, // another of these every now and then
        strange,
    };

    TransportScript (Dice& diceToUse, bool allowStrange) : dice (diceToUse)
    {
        kind = static_cast<Kind> (dice.below (11));

        if (allowStrange && dice.chance (0.5))
            kind = Kind::strange;

        current = kind;
        // Half of the tempos and places are the round ones that sit exactly on a boundary.
        bpm = dice.chance (0.5) ? 120.0 : dice.between (20.0, 999.0);
        ppq = dice.chance (0.5) ? static_cast<double> (dice.below (1024)) * 0.25 : dice.between (0.0, 700.0);
        numerator = dice.chance (0.5) ? 4 : 1 + dice.below (16);
        denominator = dice.chance (0.5) ? 4 : 1 << dice.below (5);
        loopStart = ppq;
        loopLength = dice.between (0.01, 0.3);

        if (kind == Kind::preRoll)
            ppq = -dice.between (0.0, 0.3);
    }

    [[nodiscard]] std::string name() const
    {
        static constexpr const char* names[] = { "no play head", "no position", "at zero",  "stopped",
                                                 "playing",      "looping",     "jumping",  "pre-roll",
                                                 "zero tempo",   "tempo ramp",  "changing", "strange" };
        return names[static_cast<int> (kind)];
    }

    reference::Transport now()
    {
        if (kind == Kind::changing && dice.chance (0.05))
            current = static_cast<Kind> (dice.below (10));

        reference::Transport transport;
        transport.hasPlayHead = current != Kind::noPlayHead;
        transport.hasPosition = transport.hasPlayHead && current != Kind::noPosition;
        transport.bpm = current == Kind::zeroTempo ? 0.0 : bpm;
        transport.ppqPosition = current == Kind::atZero ? 0.0 : ppq;
        transport.timeSigNumerator = numerator;
        transport.timeSigDenominator = denominator;

        if (current == Kind::strange)
            makeStrange (transport);

        return transport;
    }

    void advance (int numFrames, double rate)
    {
        const double beats = bpm / 60.0 * numFrames / rate;

        if (current == Kind::noPlayHead || current == Kind::noPosition || current == Kind::atZero
            || current == Kind::stopped)
            return;

        ppq += beats;

        if (current == Kind::looping && ppq >= loopStart + loopLength)
            ppq -= loopLength;

        if (current == Kind::jumping && dice.chance (0.1))
            ppq = dice.chance (0.2) ? 0.0 : dice.between (-4.0, 700.0);

        if (current == Kind::tempoRamp)
            bpm *= 1.001;
    }

private:
    void makeStrange (reference::Transport& transport)
    {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

        if (dice.chance (0.3))
            transport.ppqPosition = dice.oneOf (std::array { infinity, -infinity, notANumber, 1e300, -1e18, 5e-324 });

        if (dice.chance (0.3))
            transport.bpm = dice.oneOf (std::array { infinity, -infinity, notANumber, 1e300, -120.0, 1e-300 });

        if (dice.chance (0.3))
            transport.timeSigNumerator = dice.oneOf (std::array { 0, -1, 2147483647 });

        if (dice.chance (0.3))
            transport.timeSigDenominator = dice.oneOf (std::array { 0, -4, 2147483647 });
    }

    Dice& dice;
    Kind kind {};
    Kind current {};
    double bpm = 120.0;
    double ppq = 0.0;
    int numerator = 4;
    int denominator = 4;
    double loopStart = 0.0;
    double loopLength = 1.0;
};

//======================================================================================================================
/** One channel of sound; the name tells which it is. */
inline std::pair<std::string, std::vector<float>> drawSound (Dice& dice, int numFrames, bool strange)
{
    std::vector<float> samples (static_cast<std::size_t> (numFrames), 0.0f);
    static constexpr const char* names[] = { "noise", "silence", "loud", "sine", "clicks", "burst", "faint", "square" };
    const int which = dice.below (8);
    const double step = dice.between (0.0005, 1.5);
    const int burstLength = numFrames / 4;

    for (int n = 0; n < numFrames; ++n)
    {
        double x = 0.0;

        switch (which)
        {
            case 0:
                x = dice.between (-1.0, 1.0);
                break;
            case 2: // far beyond both channels' clamps
                x = dice.between (-45.0, 45.0);
                break;
            case 3:
                x = 0.8 * std::sin (step * n);
                break;
            case 4:
                x = dice.chance (0.01) ? dice.between (-1.0, 1.0) : 0.0;
                break;
            case 5:
                x = n < burstLength ? dice.between (-1.0, 1.0) : 0.0;
                break;
            case 6: // down to what is flushed to zero
                x = dice.between (-1.0, 1.0);
                x *= std::pow (10.0, -dice.between (20.0, 44.0));
                break;
            case 7:
                x = std::fmod (step * n, 6.283) < 3.1415 ? -0.5 : 0.5;
                break;
            default:
                break;
        }

        float sample = static_cast<float> (x);

        if (strange && dice.chance (0.002))
            sample = dice.oneOf (std::array { std::numeric_limits<float>::quiet_NaN(),
                                              std::numeric_limits<float>::infinity(),
                                              -std::numeric_limits<float>::infinity(), 3e38f });

        samples[static_cast<std::size_t> (n)] = sample;
    }

    return { names[which], samples };
}

/** A host's way of cutting time into blocks. */
class BlockSizes
{
public:
    explicit BlockSizes (Dice& diceToUse) : dice (diceToUse), style (dice.below (7)) {}

    int next()
    {
        switch (style)
        {
            case 0:
                return 1;
            case 1:
                return 7;
            case 2:
                return 64;
            case 3:
                return 512;
            case 4:
                return dice.below (700);
            case 5:
                return dice.chance (0.3) ? 0 : 1 + dice.below (33);
            default:
                return dice.oneOf (std::array { 0, 1, 7, 64, 512 });
        }
    }

private:
    Dice& dice;
    int style;
};

inline double drawRate (Dice& dice)
{
    if (dice.chance (0.04)) // none, or one that no host should tell
        return dice.oneOf (std::array { 0.0, 999.0, 10000000001.0 });

    if (dice.chance (0.15))
        return dice.between (22050.0, 192000.0);

    return dice.oneOf (std::array { 22050.0, 32000.0, 44100.0, 48000.0, 88200.0, 96000.0, 176400.0, 192000.0 });
}

//======================================================================================================================
/** The whole scenario of one seed. */
inline Scenario makeScenario (std::uint32_t seed, const Options& options = {})
{
    Dice dice (seed);
    PatchMaker patch (dice, options);
    Scenario result;
    result.seed = seed;
    result.stereo = dice.chance (0.75);
    result.lfoSeeds = { dice.word(), dice.word() };

    const auto theme = patch.drawTheme();
    result.theme = PatchMaker::nameOf (theme);
    result.positions = patch.draw (theme);

    const auto leftSound = drawSound (dice, options.numFrames, options.strangeSamples);
    result.sound = leftSound.first;
    result.left = leftSound.second;

    if (result.stereo)
    {
        const auto rightSound = drawSound (dice, options.numFrames, options.strangeSamples);
        result.sound += " / " + rightSound.first;
        result.right = rightSound.second;
    }

    TransportScript transport (dice, options.strangeTransport);
    result.transportScript = transport.name();
    BlockSizes sizes (dice);
    double rate = drawRate (dice);

    // A glide takes a certain time, so that a lower rate sees more of the sleep after it.
    if (theme == PatchMaker::Theme::asleep && dice.chance (0.8))
        rate = dice.oneOf (std::array { 22050.0, 32000.0, 44100.0, 48000.0 });

    const double movesPerFrame = dice.oneOf (std::array { 0.0, 0.0005, 0.005 });
    auto positions = result.positions;

    for (int done = 0; done < options.numFrames;)
    {
        Block block;
        block.numFrames = std::min (sizes.next(), options.numFrames - done);
        block.prepare = result.blocks.empty() || dice.chance (0.0002 * block.numFrames);

        if (block.prepare && ! result.blocks.empty() && dice.chance (0.5))
            rate = drawRate (dice);

        block.hostRate = rate;
        block.transport = transport.now();

        if (! result.blocks.empty() && dice.chance (movesPerFrame * block.numFrames))
        {
            for (int moves = 1 + dice.below (3); moves > 0; --moves)
            {
                // Every other move goes to what the frame itself watches, or to what selects filters.
                const int index = dice.chance (0.5) ? dice.oneOf (std::array { 0, 1, 2, 3, 4, 5, 30 })
                                                    : dice.below (reference::Index::count);
                float& position = positions[static_cast<std::size_t> (index)];

                if (theme == PatchMaker::Theme::asleep && dice.chance (0.9)) // wakes it for a moment
                    position = patch.nudge (index, position, 0.001);
                else if (dice.chance (0.4))
                    position = patch.nudge (index, position, 0.02);
                else
                    position = patch.drawFor (index);

                block.moves.push_back ({ index, position });
            }
        }

        const bool plausible = rate > 1000.0 && rate < 1e6;
        transport.advance (block.numFrames, plausible ? rate : 96000.0);
        done += block.numFrames;
        result.blocks.push_back (std::move (block));
    }

    return result;
}

/** The same scenario cut into further blocks; no engine may tell the two apart. */
inline Scenario splitFurther (const Scenario& scenario, std::uint32_t seed)
{
    Dice dice (seed);
    Scenario result = scenario;
    result.blocks.clear();

    for (const Block& whole : scenario.blocks)
    {
        Block piece = whole;
        int left = whole.numFrames;

        do
        {
            piece.numFrames = dice.below (left + 1);
            left -= piece.numFrames;
            result.blocks.push_back (piece);
            piece.moves.clear();
            piece.prepare = false;
        } while (left > 0);
    }

    return result;
}

/** One line for the message of a failed comparison. */
inline std::string describe (const Scenario& scenario)
{
    std::ostringstream text;
    text << "seed " << scenario.seed << ": " << scenario.theme << ", transport " << scenario.transportScript << ", "
         << scenario.sound << (scenario.stereo ? ", stereo, " : ", mono, ") << scenario.left.size() << " frames in "
         << scenario.blocks.size() << " blocks, " << scenario.blocks.front().hostRate << " Hz at first";
    return text.str();
}

//======================================================================================================================
/** Plays a scenario into anything that has these operations, in this order of calls:

        void seedLfo (int lfo, std::uint32_t seed);
        void setParameter (int index, float position);
        void setSampleRate (double hostRate);
        void prepareToPlay();
        void setTransport (const reference::Transport&);
        void process (float* left, float* rightOrNull, int numFrames);
        void blockDone (int blockIndex);            // a place to compare inner state

    The effect's own output comes back. */
template <typename Player>
Output play (const Scenario& scenario, Player& player)
{
    Output output { scenario.left, scenario.right };

    for (int lfo = 0; lfo < 2; ++lfo)
        player.seedLfo (lfo, scenario.lfoSeeds[static_cast<std::size_t> (lfo)]);

    for (int i = 0; i < reference::Index::count; ++i)
        player.setParameter (i, scenario.positions[static_cast<std::size_t> (i)]);

    std::size_t done = 0;
    int blockIndex = 0;

    for (const Block& block : scenario.blocks)
    {
        player.setSampleRate (block.hostRate);

        if (block.prepare)
            player.prepareToPlay();

        for (const ParameterMove& move : block.moves)
            player.setParameter (move.index, move.position);

        player.setTransport (block.transport);
        player.process (output.left.data() + done, scenario.stereo ? output.right.data() + done : nullptr,
                        block.numFrames);
        player.blockDone (blockIndex++);
        done += static_cast<std::size_t> (block.numFrames);
    }

    return output;
}

/** The second engine as a player. */
struct ReferencePlayer
{
    reference::Engine engine;
    reference::Transport transport;

    ReferencePlayer()
    {
        engine.transport = [this] { return transport; };
    }

    ReferencePlayer (const ReferencePlayer&) = delete;
    ReferencePlayer& operator= (const ReferencePlayer&) = delete;

    void seedLfo (int lfo, std::uint32_t seed) { engine.seedLfo (lfo, seed); }
    void setParameter (int index, float position) { engine.setParameter (index, position); }
    void setSampleRate (double hostRate) { engine.setSampleRate (hostRate); }
    void prepareToPlay() { engine.prepareToPlay(); }
    void setTransport (const reference::Transport& newTransport) { transport = newTransport; }
    void process (float* left, float* right, int numFrames) { engine.process (left, right, numFrames); }
    void blockDone (int) {}
};

} // namespace scenario
