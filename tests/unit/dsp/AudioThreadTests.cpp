// SPDX-License-Identifier: AGPL-3.0-or-later
#include "support/AudioThreadWatch.h"

#include <cstdlib>
#include <memory>
#include <mutex>

#include <gtest/gtest.h>

#include "dsp/filters/ButterworthFilter.h"
#include "dsp/filters/GrungeLadder.h"
#include "dsp/filters/ResonancePeak.h"
#include "dsp/modulation/Frequencer.h"
#include "dsp/modulation/LfoGenerator.h"

namespace
{
// Hidden from the optimiser, which may remove an allocation without a use.
volatile std::size_t anySize = 100;

void* volatile sink = nullptr;
} // namespace

// A watch that sees nothing would pass every test.
TEST (AudioThreadWatch, SeesAllocationsReleasesAndLocks)
{
    std::mutex mutex;
    AudioThreadWatch::Counts counts;

    {
        const AudioThreadWatch watch;
        sink = std::malloc (anySize);
        std::free (sink);
        sink = new char[anySize];
        delete[] static_cast<char*> (sink);
        mutex.lock();
        mutex.unlock();
        counts = watch.counts();
    }

    EXPECT_EQ (counts.allocations, 2);
    // clang's address sanitizer reports each one twice.
    EXPECT_GE (counts.releases, 2);
    EXPECT_EQ (counts.locks, 1);
}

TEST (AudioThread, NeitherAllocatesNorLocksInAnyClassOfTheEngine)
{
    ButterworthFilter filter;
    ResonancePeak peak;
    GrungeLadder ladder;
    LfoGenerator generator;
    frequencer::Offsets offsets;
    auto litSteps = 0;
    AudioThreadWatch::Counts counts;

    {
        const AudioThreadWatch watch;

        for (int i = 0; i < 2000; ++i)
        {
            auto left = 0.5, right = -0.5;
            filter.design ((unsigned) (i % 9), i % 2 == 0, 10.0 * i, 48000.0);
            filter.process (left, right);
            peak.design (48000.0, 10.0 + i, 0.5);
            peak.process (left, right);
            ladder.configure (i % 9, i % 2 == 0, 10.0 * i, 0.01 * i, 80.0, 48000.0);
            ladder.process (left, right);
            generator.setRate (i % 10, 48000.0f, 20.0f);
            generator.followReference = true;
            generator.curveExponent = 1.0f + 0.5f * (float) (i % 3 - 1);
            generator.advance();
            offsets.highpass[0] = 0.5f + 0.5f * generator.render();
            litSteps += frequencer::evaluate (0.1 * i, 0.0f, offsets).stepLit[0] ? 1 : 0;
        }

        counts = watch.counts();
    }

    EXPECT_EQ (counts, AudioThreadWatch::Counts {});
    EXPECT_GT (litSteps, 0);
}
