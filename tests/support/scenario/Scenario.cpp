// SPDX-License-Identifier: AGPL-3.0-or-later
#include "support/scenario/Scenario.h"

#include <algorithm>
#include <sstream>

#include "support/scenario/Dice.h"
#include "support/scenario/RandomBlockSizes.h"
#include "support/scenario/RandomPatch.h"
#include "support/scenario/RandomSound.h"
#include "support/scenario/RandomTransport.h"

namespace scenario
{

namespace
{
double drawRate (Dice& dice)
{
    if (dice.chance (0.04)) // none, or one that no host should tell
        return dice.oneOf (std::array { 0.0, 999.0, 10000000001.0 });

    if (dice.chance (0.15))
        return dice.between (22050.0, 192000.0);

    return dice.oneOf (std::array { 22050.0, 32000.0, 44100.0, 48000.0, 88200.0, 96000.0, 176400.0, 192000.0 });
}
} // namespace

Scenario makeScenario (std::uint32_t seed, const Options& options)
{
    Dice dice (seed);
    RandomPatch patch (dice, options);
    Scenario result;
    result.seed = seed;
    result.stereo = dice.chance (0.75);
    result.lfoSeeds = { dice.word(), dice.word() };

    const auto theme = patch.drawTheme();
    result.theme = RandomPatch::nameOf (theme);
    result.positions = patch.draw (theme);

    const auto leftSound = drawSound (dice, options.numFrames, options.strangeSamples);
    result.sound = leftSound.name;
    result.left = leftSound.samples;

    if (result.stereo)
    {
        const auto rightSound = drawSound (dice, options.numFrames, options.strangeSamples);
        result.sound += " / " + rightSound.name;
        result.right = rightSound.samples;
    }

    RandomTransport transport (dice, options.strangeTransport);
    result.transport = transport.name();
    RandomBlockSizes sizes (dice);
    double rate = drawRate (dice);

    // A glide takes a certain time, so that a lower rate sees more of the sleep after it.
    if (theme == RandomPatch::Theme::asleep && dice.chance (0.8))
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
                float& position = positions[(std::size_t) index];

                if (theme == RandomPatch::Theme::asleep && dice.chance (0.9)) // wakes it for a moment
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

Scenario splitFurther (const Scenario& scenario, std::uint32_t seed)
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

std::string describe (const Scenario& scenario)
{
    std::ostringstream text;
    text << "seed " << scenario.seed << ": " << scenario.theme << ", transport " << scenario.transport << ", "
         << scenario.sound << (scenario.stereo ? ", stereo, " : ", mono, ") << scenario.left.size() << " frames in "
         << scenario.blocks.size() << " blocks, " << scenario.blocks.front().hostRate << " Hz at first";
    return text.str();
}

} // namespace scenario
