// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <atomic>
#include <bit>
#include <cstdint>
#include <string>
#include <vector>

#include <juce_audio_processors/juce_audio_processors.h>

namespace juce
{
/** A parameter whose value is always its normalised position, 0 to 1: for the host, the settings, the window and the
    engine alike, and for choices too. valueKind says what the position means, but only the text follows it: each reader
    applies its own curve. All public fields but lastSeenValue are constant after construction. */
class AudioParameterFloatKestrin : public AudioParameterFloat
{
public:
    /** How a position is put into words. */
    enum ValueKind : std::int32_t
    {
        /** On or off. No object of this class has it, because JUCE's own class serves for that. */
        switchKind = 0,
        wholeKind = 1,
        percentKind = 2,
        cubicKind = 3,
        gainKind = 4,
        highGainKind = 5,
        frequencyKind = 6,
        exponentialKind = 7,
        signedFifteenKind = 8,
        bandwidthKind = 9,
        choiceKind = 10,
        bipolarKind = 11,
        ratioKind = 12,
        timeKind = 13
    };

    /** A parameter on a display range.
        @param newDefaultValue  normalised, 0 to 1
        @param unit             if empty, the kind's own unit is taken */
    AudioParameterFloatKestrin (const String& parameterID, const String& parameterName, float newMinValue,
                                float newMaxValue, float newDefaultValue, int newValueKind, std::string unit);

    /** A choice. Its positions are fractions of newStepCount - 1, and the texts fill the lowest of them. The room above the
        last text is meant: newStepCount decides which normalised value is stored for a text. */
    AudioParameterFloatKestrin (const String& parameterID, const String& parameterName, float newMinValue,
                                float newMaxValue, int defaultIndex, std::vector<std::string> newChoiceTexts,
                                int newStepCount);

    ~AudioParameterFloatKestrin() override = default;

    /** The index of the nearest of stepCount positions, not limited by the number of texts; 0 for a parameter that is not
        a choice and for a NaN. Any thread. */
    [[nodiscard]] int getChoiceIndex() const noexcept { return getChoiceIndexForValue (get()); }

    /** The same for any position. */
    [[nodiscard]] int getChoiceIndexForValue (float position) const noexcept
    {
        return roundHalfAway (highestIndex * position);
    }

    /** True if the value differs from the one at the last call. Audio thread only. */
    [[nodiscard]] bool hasChanged() noexcept
    {
        const auto current = get();

        if (current == lastSeenValue)
            return false;

        lastSeenValue = current;
        return true;
    }

    /** From now on adds 1 to the counter after every setting of the value. A reader of many parameters then compares one
        number to see whether any of them may have moved. To be called before the parameter is shared.
        @param newCounter  must outlive the last setting */
    void countChangesIn (std::atomic<std::uint32_t>& newCounter) noexcept { changeCounter = &newCounter; }

    /** Empty for a parameter that is not a choice. */
    [[nodiscard]] std::vector<std::string> getChoiceTexts() const { return choiceTexts; }

    /** Positions of a choice: the texts fill the lowest ones. 0 for a parameter that is not a choice. */
    [[nodiscard]] int getStepCount() const noexcept { return stepCount; }

    /** The text of any position. Allocates; any thread but the audio thread. */
    [[nodiscard]] std::string formatValueText (float position) const;

    std::int32_t valueKind = 0;
    float defaultValue = 0.0f;
    float lastSeenValue = -1.0e20f;
    std::int32_t stepCount = 0;
    float minValue = 0.0f;
    float maxValue = 1.0f;
    std::vector<std::string> choiceTexts;
    String unitText;

private:
    /** stepCount - 1 for a choice with more than one step, else 0. */
    float highestIndex = 0.0f;

    std::atomic<std::uint32_t>* changeCounter = nullptr;

    void valueChanged (float) override
    {
        if (changeCounter != nullptr)
            changeCounter->fetch_add (1, std::memory_order_release);
    }

    void startAtDefault (float newDefaultValue);

    /** Rounds as roundf does, half away from zero, without a call into the maths library: the audio thread asks for
        choices at every frame. The sum of a float and a half is exact in a double. */
    [[nodiscard]] static int roundHalfAway (float x) noexcept
    {
        // Compared as bits, every number from 0 to just below the limit is less, and every negative number and NaN is more.
        constexpr auto limit = std::bit_cast<std::uint32_t> (4194304.0f);

        return std::bit_cast<std::uint32_t> (x) < limit ? (int) ((double) x + 0.5) : nearestInt (x);
    }

    /** The same for any number: 0 for a NaN, and the nearest end of int beyond its range. */
    [[nodiscard]] static int nearestInt (float x) noexcept;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (AudioParameterFloatKestrin)
};
} // namespace juce
