// SPDX-License-Identifier: AGPL-3.0-or-later
#include <set>

#include "unit/editor/EditorFixture.h"

/** The window in its three states with settings that show arcs, lights and dots. The pictures are there to be looked
    at; the tests see that every column is drawn. */
class EditorPictures : public EditorFixture
{
protected:
    void setBusySettings()
    {
        set (parameters.hpFreq, 0.35f);
        set (parameters.hpReso, 0.65f);
        set (parameters.lpFreq, 0.8f);
        set (parameters.lpReso, 1.0f);
        set (parameters.hpMode, 3.0f / 9.0f);
        set (parameters.lpMode, 4.0f / 9.0f);
        set (parameters.link, 1.0f);
    }

    void setBusyLfos()
    {
        set (parameters.lfoSync[1], 3.0f / 9.0f);
        set (parameters.lfoMode[1], 6.0f / 16.0f);
        set (parameters.lfoShape[0], 5.0f / 29.0f);
        set (parameters.lfoCurve[0], 0.7f);
        set (parameters.lfoToHpFreq[0], 0.8f);
        set (parameters.lfoToOtherLfo[1], 0.3f);
        processor.lfo[0].phaseA = 0.3f;
        processor.lfo[1].phaseA = 0.2f;
    }

    void setBusySteps()
    {
        for (std::size_t step = 0; step < ParameterSet::numSteps; ++step)
        {
            set (parameters.seqHpf[step], 0.05f + 0.1f * (float) step);
            set (parameters.seqLpf[step], 0.95f - 0.1f * (float) step);
            processor.stepLit[step] = step % 3 != 0;
        }

        set (parameters.seqOffs, 0.51f);
    }

    /** Captions, knobs and lights bring many colours into a column, and a column without them has one. */
    static std::size_t numColours (const juce::Image& image, juce::Rectangle<int> area)
    {
        std::set<juce::uint32> colours;

        for (auto y = area.getY(); y < area.getBottom(); ++y)
            for (auto x = area.getX(); x < area.getRight(); ++x)
                colours.insert (image.getPixelAt (x, y).getARGB());

        return colours.size();
    }

    void expectPictures (const juce::String& name, int width)
    {
        editor().timerCallback();

        for (const auto scale : { 1, 2 })
        {
            const auto image = picture (editor(), (float) scale);
            keepPicture (image, name + (scale == 1 ? ".png" : "@2x.png"));
            EXPECT_EQ (image.getWidth(), width * scale);
            EXPECT_EQ (image.getHeight(), 546 * scale);
            EXPECT_EQ (image.getPixelAt (1, 1).getARGB(), 0xff000000u);
            EXPECT_EQ (image.getPixelAt (width * scale - 2, 540 * scale).getARGB(), 0xff404040u);

            for (auto column = 0; column < (width == 266 ? 2 : 4); ++column)
                EXPECT_GT (numColours (image, juce::Rectangle<int> { 10 + 127 * column, 37, 117, 475 } * scale), 100u)
                    << "column " << column;
        }
    }
};

TEST_F (EditorPictures, ShowTheFiltersAlone)
{
    setBusySettings();
    expectPictures ("window", 266);
}

TEST_F (EditorPictures, ShowTheLfos)
{
    setBusySettings();
    setBusyLfos();
    expectPictures ("window-lfos", 520);
}

TEST_F (EditorPictures, ShowTheFrequencer)
{
    setBusySettings();
    setBusySteps();
    set (parameters.filtMode, 0.1f);
    expectPictures ("window-frequencer", 520);
}
