// SPDX-License-Identifier: AGPL-3.0-or-later
#include "parameters/AudioParameterFloatKestrin.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace
{
using Parameter = juce::AudioParameterFloatKestrin;

juce::AudioProcessorParameter& hostView (Parameter& parameter) { return parameter; }

Parameter makeSlope() { return { "mode", "Mode", 0.0f, 1.0f, 2, { "bypass", "6", "12", "24", "48" }, 10 }; }

Parameter makeOfKind (int kind, const std::string& unit = {})
{
    return { "id", "Name", 20.0f, 20000.0f, 0.25f, kind, unit };
}

struct Listener : juce::AudioProcessorParameter::Listener
{
    void parameterValueChanged (int, float) override { ++numCalls; }
    void parameterGestureChanged (int, bool) override {}

    int numCalls = 0;
};
} // namespace

TEST (AudioParameterFloatKestrin, StartsAtItsDefaultForTheHostToo)
{
    auto parameter = makeOfKind (Parameter::frequencyKind);

    EXPECT_EQ (parameter.get(), 0.25f);
    EXPECT_EQ (parameter.defaultValue, 0.25f);
    EXPECT_EQ (hostView (parameter).getValue(), 0.25f);
    EXPECT_EQ (hostView (parameter).getDefaultValue(), 0.25f);
}

TEST (AudioParameterFloatKestrin, HidesItsDisplayRangeFromTheHost)
{
    auto parameter = makeOfKind (Parameter::frequencyKind);
    const auto& range = parameter.getNormalisableRange();

    EXPECT_EQ (range.start, 0.0f);
    EXPECT_EQ (range.end, 1.0f);
    EXPECT_EQ (range.interval, 0.0f);
    EXPECT_EQ (range.skew, 1.0f);
    EXPECT_FALSE (range.symmetricSkew);
    EXPECT_EQ (parameter.minValue, 20.0f);
    EXPECT_EQ (parameter.maxValue, 20000.0f);
    EXPECT_EQ (hostView (parameter).getNumSteps(), juce::AudioProcessor::getDefaultNumParameterSteps());
    EXPECT_EQ (parameter.getVersionHint(), 0);
}

TEST (AudioParameterFloatKestrin, ShowsAChoiceToTheHostAsContinuous)
{
    auto parameter = makeSlope();

    EXPECT_FALSE (hostView (parameter).isDiscrete());
    EXPECT_EQ (hostView (parameter).getNumSteps(), juce::AudioProcessor::getDefaultNumParameterSteps());
}

TEST (AudioParameterFloatKestrin, TakesTheUnitOfItsKindWhenNoneIsGiven)
{
    const std::vector<std::pair<int, std::string>> units { { 0, "" },    { 1, "" },    { 2, "%" },  { 3, "" },
                                                           { 4, "dB" },  { 5, "dB" },  { 6, "Hz" }, { 7, "" },
                                                           { 8, "" },    { 9, "oct" }, { 10, "" },  { 11, "" },
                                                           { 12, ":1" }, { 13, "" },   { 14, "" },  { -1, "" } };

    for (const auto& [kind, unit] : units)
        EXPECT_EQ (makeOfKind (kind).unitText.toStdString(), unit) << "kind " << kind;

    EXPECT_EQ (makeOfKind (Parameter::frequencyKind, "rpm").unitText.toStdString(), "rpm");
}

TEST (AudioParameterFloatKestrin, StoresAChoiceAsAFractionOfItsSteps)
{
    const auto parameter = makeSlope();

    EXPECT_EQ (parameter.defaultValue, 2.0f / 9.0f);
    EXPECT_EQ (parameter.get(), 2.0f / 9.0f);
    EXPECT_EQ (parameter.valueKind, Parameter::choiceKind);
    EXPECT_EQ (parameter.getChoiceIndex(), 2);
    EXPECT_EQ (parameter.getStepCount(), 10);
    EXPECT_EQ (parameter.getChoiceTexts(), (std::vector<std::string> { "bypass", "6", "12", "24", "48" }));
    EXPECT_TRUE (parameter.unitText.isEmpty());
}

TEST (AudioParameterFloatKestrin, HasIndexZeroEverywhereWithOneStepOrNone)
{
    for (const auto steps : { -1, 0, 1 })
    {
        const Parameter parameter ("id", "Name", 0.0f, 1.0f, 3, { "a", "b", "c", "d" }, steps);

        EXPECT_EQ (parameter.defaultValue, 0.0f);

        for (const auto position : { 0.0f, 0.3f, 0.5f, 1.0f })
            EXPECT_EQ (parameter.getChoiceIndexForValue (position), 0) << steps << " steps at " << position;
    }
}

TEST (AudioParameterFloatKestrin, RoundsAChoiceHalfAwayFromZero)
{
    // 9 times 0.5 is 4.5: index 5, which has no text.
    EXPECT_EQ (makeSlope().getChoiceIndexForValue (0.5f), 5);
}

TEST (AudioParameterFloatKestrin, DoesNotLimitTheIndexToTheTexts)
{
    const Parameter shape ("shape", "Shape", 0.0f, 1.0f, 1, { "a", "b", "c", "d", "e", "f" }, 30);

    EXPECT_EQ (shape.getChoiceIndexForValue (1.0f), 29);
    EXPECT_EQ (makeSlope().getChoiceIndexForValue (2.0f), 18);
    EXPECT_EQ (makeSlope().getChoiceIndexForValue (-1.0f), -9);
}

TEST (AudioParameterFloatKestrin, RoundsEveryPositionAsRoundfDoes)
{
    for (const auto steps : { 2, 3, 10, 17, 30, 1000001 })
    {
        const Parameter parameter ("id", "Name", 0.0f, 1.0f, 0, { "a" }, steps);

        // Up to 1.5 and below 0: past the fast path too, where index times position is above 2^22 or negative.
        for (int step = -2000; step <= 15000; ++step)
        {
            const auto position = (float) step / 10000.0f * (step % 3 == 0 ? 7.0f : 1.0f);

            ASSERT_EQ (parameter.getChoiceIndexForValue (position), (int) std::round ((float) (steps - 1) * position))
                << steps << " steps at " << position;
        }
    }
}

TEST (AudioParameterFloatKestrin, RoundsTheNeighboursOfEveryHalfAsRoundfDoes)
{
    for (const auto steps : { 2, 10, 17, 30 })
    {
        const Parameter parameter ("id", "Name", 0.0f, 1.0f, 0, { "a" }, steps);

        for (int index = 0; index < steps; ++index)
        {
            const auto half = ((float) index + 0.5f) / (float) (steps - 1);

            for (const auto position : { std::nextafter (half, -1.0f), half, std::nextafter (half, 2.0f) })
                ASSERT_EQ (parameter.getChoiceIndexForValue (position),
                           (int) std::round ((float) (steps - 1) * position))
                    << steps << " steps at " << position;
        }
    }
}

TEST (AudioParameterFloatKestrin, GivesAnIndexForNaNAndInfinity)
{
    using Limits = std::numeric_limits<float>;
    const auto parameter = makeSlope();

    EXPECT_EQ (parameter.getChoiceIndexForValue (Limits::quiet_NaN()), 0);
    EXPECT_EQ (parameter.getChoiceIndexForValue (Limits::infinity()), std::numeric_limits<int>::max());
    EXPECT_EQ (parameter.getChoiceIndexForValue (-Limits::infinity()), std::numeric_limits<int>::min());
    EXPECT_EQ (parameter.getChoiceIndexForValue (Limits::max()), std::numeric_limits<int>::max());
    EXPECT_EQ (parameter.getChoiceIndexForValue (Limits::denorm_min()), 0);
    EXPECT_EQ (parameter.getChoiceIndexForValue (-0.0f), 0);
}

TEST (AudioParameterFloatKestrin, HasIndexZeroForParametersThatAreNoChoice)
{
    EXPECT_EQ (makeOfKind (Parameter::bipolarKind).getChoiceIndexForValue (1.0f), 0);
    EXPECT_EQ (makeOfKind (Parameter::bipolarKind).getChoiceIndex(), 0);
}

TEST (AudioParameterFloatKestrin, HasIndexZeroWhileItHoldsANaN)
{
    auto parameter = makeSlope();
    hostView (parameter).setValue (std::numeric_limits<float>::quiet_NaN());

    EXPECT_EQ (parameter.getChoiceIndex(), 0);
}

TEST (AudioParameterFloatKestrin, SeesAChangeAtTheFirstCallAndThenOnlyWhenTheValueMoves)
{
    auto parameter = makeOfKind (Parameter::percentKind);

    EXPECT_TRUE (parameter.hasChanged());
    EXPECT_FALSE (parameter.hasChanged());

    hostView (parameter).setValue (0.75f);
    EXPECT_TRUE (parameter.hasChanged());
    EXPECT_FALSE (parameter.hasChanged());

    hostView (parameter).setValue (0.75f);
    EXPECT_FALSE (parameter.hasChanged());
}

TEST (AudioParameterFloatKestrin, SeesAChangeAtEveryCallWhileItHoldsANaN)
{
    auto parameter = makeOfKind (Parameter::percentKind);
    hostView (parameter).setValue (std::numeric_limits<float>::quiet_NaN());
    ASSERT_TRUE (std::isnan (parameter.get()));

    for (int call = 0; call < 3; ++call)
        EXPECT_TRUE (parameter.hasChanged()) << "call " << call;

    hostView (parameter).setValue (0.75f);
    EXPECT_TRUE (parameter.hasChanged());
    EXPECT_FALSE (parameter.hasChanged());
}

TEST (AudioParameterFloatKestrin, IgnoresTheTextLengthThatTheHostAsksFor)
{
    auto parameter = makeOfKind (Parameter::frequencyKind);

    EXPECT_EQ (hostView (parameter).getText (1.0f, 2).toStdString(), "20 kHz");
    EXPECT_EQ (hostView (parameter).getText (1.0f, 0).toStdString(), "20 kHz");
    EXPECT_EQ (hostView (parameter).getText (1.0f, 1024).toStdString(), "20 kHz");
    EXPECT_EQ (hostView (parameter).getCurrentValueAsText(), "112 Hz");
}

TEST (AudioParameterFloatKestrin, TakesTypedTextAsTheNormalisedPosition)
{
    auto parameter = makeOfKind (Parameter::frequencyKind);

    EXPECT_EQ (hostView (parameter).getValueForText ("0.25"), 0.25f);
    EXPECT_EQ (hostView (parameter).getValueForText ("440 Hz"), 1.0f);
    EXPECT_EQ (hostView (parameter).getValueForText ("-3"), 0.0f);
    EXPECT_EQ (hostView (parameter).getValueForText ("loud"), 0.0f);
}

TEST (AudioParameterFloatKestrin, ClampsTheHostsValuesToZeroToOne)
{
    auto parameter = makeOfKind (Parameter::frequencyKind);

    constexpr auto infinity = std::numeric_limits<float>::infinity();

    for (const auto& [set, kept] : { std::pair { 0.125f, 0.125f },
                                     { 1.5f, 1.0f },
                                     { -0.5f, 0.0f },
                                     { std::nextafter (1.0f, 2.0f), 1.0f },
                                     { -std::numeric_limits<float>::denorm_min(), 0.0f },
                                     { 20000.0f, 1.0f },
                                     { infinity, 1.0f },
                                     { -infinity, 0.0f } })
    {
        hostView (parameter).setValue (set);
        EXPECT_EQ (parameter.get(), kept) << set;
        EXPECT_EQ (hostView (parameter).getValue(), kept) << set;
    }
}

TEST (AudioParameterFloatKestrin, TellsItsListenersOnlyWhenAskedTo)
{
    auto parameter = makeOfKind (Parameter::percentKind);
    Listener listener;
    hostView (parameter).addListener (&listener);

    hostView (parameter).setValue (0.5f);
    EXPECT_EQ (listener.numCalls, 0);

    hostView (parameter).sendValueChangedMessageToListeners (0.5f);
    EXPECT_EQ (listener.numCalls, 1);

    hostView (parameter).removeListener (&listener);
}
