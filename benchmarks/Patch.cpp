// SPDX-License-Identifier: AGPL-3.0-or-later
#include "Patch.h"

#include <initializer_list>

#include "reference/ReferenceEngine.h"

namespace
{
namespace Index = reference::Index;
using reference::parameterTable;
using reference::positionOfChoice;

constexpr int sineShape = 0;
constexpr int drunkSync = 2;
constexpr int steepest = 4;

Patch::Setting choice (int index, int choiceIndex)
{
    return { index, positionOfChoice (choiceIndex, parameterTable()[(std::size_t) index].stepCount) };
}

void append (Patch& patch, std::initializer_list<Patch::Setting> settings)
{
    patch.settings.insert (patch.settings.end(), settings);
}
} // namespace

Patch Patch::asleep (int slope, float resonance)
{
    return { { choice (Index::hpMode, slope),
               choice (Index::lpMode, slope),
               { Index::hpFreq, 0.4f },
               { Index::lpFreq, 0.7f },
               { Index::hpReso, resonance },
               { Index::lpReso, resonance } } };
}

Patch Patch::ladder (float grunge)
{
    auto patch = asleep (steepest, grunge);
    append (patch, { choice (Index::filtMode, 1) });
    return patch;
}

Patch Patch::oneLfo()
{
    auto patch = asleep (2);
    append (patch, { choice (Index::lfoShape (0), sineShape), { Index::lfoToHpf (0), 0.7f } });
    return patch;
}

Patch Patch::bothCutoffs (int slope)
{
    auto patch = asleep (slope);
    append (patch,
            { choice (Index::lfoShape (0), sineShape), { Index::lfoToHpf (0), 0.7f }, { Index::lfoToLpf (0), 0.3f } });
    return patch;
}

Patch Patch::everything()
{
    // The resonances move by less than where they stand, so that they are never off.
    auto patch = asleep (steepest, 0.7f);

    for (int lfo = 0; lfo < 2; ++lfo)
        append (patch, { choice (Index::lfoShape (lfo), sineShape),
                         choice (Index::lfoSync (lfo), drunkSync),
                         { Index::lfoCurve (lfo), lfo == 0 ? 0.8f : 0.2f },
                         { Index::lfoToHpf (lfo), 0.6f },
                         { Index::lfoToLpf (lfo), 0.4f },
                         { Index::lfoToHpr (lfo), 0.55f },
                         { Index::lfoToLpr (lfo), 0.45f },
                         { Index::lfoToOther (lfo), 0.6f } });

    for (int step = 0; step < 10; ++step)
        append (patch, { { Index::seqHpf (step), 0.55f }, { Index::seqLpf (step), 0.45f } });

    return patch;
}
