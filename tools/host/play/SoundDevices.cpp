// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/play/SoundDevices.h"

#include <algorithm>
#include <optional>

#include <dlfcn.h>

#include "host/HostError.h"

namespace
{
/** Without a server JACK's library explains at length on stderr why it finds none. JUCE opens the same library, by this name. */
void silenceJack()
{
    using Printer = void (*) (const char*);

    if (auto* const library = dlopen ("libjack.so.0", RTLD_LAZY))
        for (const auto* name : { "jack_set_error_function", "jack_set_info_function" })
            if (auto* const setPrinter = reinterpret_cast<void (*) (Printer)> (dlsym (library, name)))
                setPrinter ([] (const char*) {});
}

/** The numbers on either side of one that is refused. */
template <typename Number>
[[nodiscard]] juce::String neighboursOf (Number refused, const juce::Array<Number>& accepted)
{
    std::optional<Number> below, above;

    for (const auto number : accepted)
        if (number < refused)
            below = std::max (number, below.value_or (number));
        else
            above = std::min (number, above.value_or (number));

    juce::StringArray words;

    for (const auto& number : { below, above })
        if (number.has_value())
            words.add (juce::String ((int) *number));

    return words.joinIntoString (" or ");
}

/** The rate to open with; 0 if the wanted one is refused. */
[[nodiscard]] double rateFor (const SoundDevices::Wanted& wanted, const juce::Array<double>& rates)
{
    constexpr double usual = 44100.0;

    if (wanted.sampleRate > 0.0)
        return rates.contains (wanted.sampleRate) ? wanted.sampleRate : 0.0;

    if (rates.contains (wanted.preferredRate))
        return wanted.preferredRate;

    const auto* const enough = std::find_if (rates.begin(), rates.end(), [] (double rate) { return rate >= usual; });
    return enough != rates.end() ? *enough : rates.getLast();
}

/** The size to open with; 0 if the wanted one is refused. */
[[nodiscard]] int blockSizeFor (const SoundDevices::Wanted& wanted, juce::AudioIODevice& device)
{
    if (wanted.blockSize == 0)
        return device.getDefaultBufferSize();

    return device.getAvailableBufferSizes().contains (wanted.blockSize) ? wanted.blockSize : 0;
}
} // namespace

SoundDevices::SoundDevices()
{
    silenceJack();
    types.emplace_back (juce::AudioIODeviceType::createAudioIODeviceType_JACK());
    types.emplace_back (juce::AudioIODeviceType::createAudioIODeviceType_ALSA());

    for (const auto& type : types)
    {
        type->scanForDevices();

        for (const auto& name : type->getDeviceNames (false))
            outputs.push_back ({ type.get(), name });
    }
}

juce::StringArray SoundDevices::names() const
{
    juce::StringArray result;

    for (const auto& output : outputs)
        result.add (output.fullName());

    return result;
}

void SoundDevices::refuse (const juce::String& reason) const
{
    throw HostError (reason
                     + (outputs.empty() ? juce::String ("; there is no sound device: connect one, or start JACK")
                                        : "; the devices are " + names().joinIntoString (" | ")));
}

const SoundDevices::Output& SoundDevices::find (const juce::String& name) const
{
    const Output* found = nullptr;

    for (const auto& output : outputs)
    {
        const auto isWhole = output.fullName().equalsIgnoreCase (name);

        if (isWhole || name.isEmpty())
            return output;

        if (! output.fullName().containsIgnoreCase (name))
            continue;

        if (found != nullptr)
            refuse ("--device: \"" + name + "\" may be more than one");

        found = &output;
    }

    if (found == nullptr)
        refuse (name.isEmpty() ? juce::String ("nothing to play to") : "--device: there is no \"" + name + "\"");

    return *found;
}

std::unique_ptr<juce::AudioIODevice> SoundDevices::open (const Wanted& wanted) const
{
    constexpr int mostChannels = 2;
    const auto& output = find (wanted.name);
    std::unique_ptr<juce::AudioIODevice> device (output.type->createDevice (output.name, {}));
    const auto numChannels = device != nullptr ? device->getOutputChannelNames().size() : 0;

    // JUCE asks the device for its channels by opening it, and keeps the reason of a failure to itself.
    if (numChannels == 0)
        refuse (output.fullName() + " cannot be opened: it is busy, or not there");

    const auto rate = rateFor (wanted, device->getAvailableSampleRates());
    const auto blockSize = blockSizeFor (wanted, *device);

    if (rate <= 0.0)
        refuse ("--rate: " + output.fullName() + " takes "
                + neighboursOf (wanted.sampleRate, device->getAvailableSampleRates()) + " Hz");

    if (blockSize == 0)
        refuse ("--block-size: " + output.fullName() + " takes "
                + neighboursOf (wanted.blockSize, device->getAvailableBufferSizes()) + " frames");

    juce::BigInteger channels;
    channels.setRange (0, std::min (numChannels, mostChannels), true);

    if (const auto error = device->open ({}, channels, rate, blockSize); error.isNotEmpty())
        refuse (output.fullName() + " cannot be opened: " + error);

    return device;
}
