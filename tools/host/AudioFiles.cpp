// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/AudioFiles.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "common/SettingsGuard.h"
#include "host/CompressedFiles.h"
#include "host/HostError.h"

namespace
{
constexpr unsigned int mostChannels = 2;
constexpr unsigned int fewestBits = 8;

/** JUCE reads silence where a file is cut short. A host that renders silence without a word helps nobody. */
void requireWholeFile (const juce::AudioFormatReader& reader, const juce::File& file)
{
    // JUCE's readers count the bytes of a frame, and divide by them.
    if (reader.bitsPerSample < fewestBits)
        throw HostError (file.getFullPathName() + ": the file is damaged or cannot be read: it has samples of "
                         + juce::String (reader.bitsPerSample) + " bits");

    const auto bytesPerFrame = (juce::int64) (reader.numChannels * reader.bitsPerSample / 8);

    if (reader.lengthInSamples < 0)
        throw HostError (file.getFullPathName() + ": the file is damaged: its header tells of "
                         + juce::String (reader.lengthInSamples) + " frames");

    if (reader.lengthInSamples * bytesPerFrame > file.getSize())
        throw HostError (file.getFullPathName() + ": the file is cut short: its header tells of "
                         + juce::String (reader.lengthInSamples) + " frames");
}

/** JUCE's reader trusts the number of entries that a list of marks or comments states, and reads past the end of the list. */
bool holdsItsEntries (juce::InputStream& stream, juce::int64 size)
{
    constexpr juce::int64 numberSize = 2, smallestEntry = 8;
    const auto start = stream.getPosition();
    const auto numEntries = (juce::int64) (juce::uint16) stream.readShortBigEndian();

    stream.setPosition (start);
    return size >= numberSize + numEntries * smallestEntry;
}

/** JUCE's reader parses notes that are XML, and its parser trusts its text. */
bool holdsSafeXml (juce::InputStream& stream, juce::int64 size)
{
    const auto start = stream.getPosition();
    juce::MemoryBlock text;

    stream.readIntoMemoryBlock (text, (ssize_t) size);
    stream.setPosition (start);
    return isSafeToParse ({ static_cast<const char*> (text.getData()), text.getSize() });
}

/** JUCE's readers allocate as much memory as a chunk says that it holds: a file of a few bytes could ask for gigabytes. The
    sound itself is not read into memory as a whole, and requireWholeFile checks its length. */
void requireWholeChunks (const juce::File& file)
{
    juce::FileInputStream stream (file);
    char container[12] {};

    if (! stream.openedOk() || stream.read (container, sizeof (container)) != (int) sizeof (container))
        return;

    const juce::String kind (container, 4);
    const auto isAiff = kind == "FORM";

    // The readers refuse any other kind of file, with an error.
    if (! isAiff && kind != "RIFF" && kind != "RF64")
        return;

    while (stream.getNumBytesRemaining() >= 8)
    {
        char name[4] {};
        stream.read (name, sizeof (name));
        const auto size = (juce::int64) (juce::uint32) (isAiff ? stream.readIntBigEndian() : stream.readInt());
        const juce::String chunk (juce::CharPointer_ASCII (name), sizeof (name));

        if (chunk == "data" || chunk == "SSND")
            stream.setPosition (std::min (stream.getPosition() + size + size % 2, stream.getTotalLength()));
        else if (size > stream.getNumBytesRemaining())
            throw HostError (file.getFullPathName() + ": the file is damaged: a part of it is longer than the file");
        else if (isAiff && (chunk == "MARK" || chunk == "COMT") && ! holdsItsEntries (stream, size))
            throw HostError (file.getFullPathName()
                             + ": the file is damaged: a list is longer than its part of the file");
        else if ((chunk == "axml" || chunk == "iXML") && ! holdsSafeXml (stream, size))
            throw HostError (file.getFullPathName() + ": the file is damaged: its notes are not text");
        else
            stream.skipNextBytes (size + size % 2);
    }
}

std::unique_ptr<juce::AudioFormatReader> openUncompressed (const juce::File& file)
{
    requireWholeChunks (file);

    juce::AudioFormatManager formats;
    formats.registerFormat (new juce::WavAudioFormat, true);
    formats.registerFormat (new juce::AiffAudioFormat, false);

    std::unique_ptr<juce::AudioFormatReader> reader (formats.createReaderFor (file.createInputStream()));

    if (reader == nullptr)
        throw HostError (file.getFullPathName() + ": not a WAV, AIFF, FLAC or Ogg file that can be read");

    requireWholeFile (*reader, file);
    return reader;
}

std::unique_ptr<juce::AudioFormatReader> openReader (const juce::File& file)
{
    if (! file.existsAsFile())
        throw HostError (file.getFullPathName() + ": there is no such file");

    auto reader = compressedFiles::isOneOfThem (file) ? compressedFiles::open (file) : openUncompressed (file);

    if (reader->numChannels == 0 || reader->numChannels > mostChannels)
        throw HostError (file.getFullPathName() + ": has " + juce::String (reader->numChannels)
                         + " channels; 1 or 2 are possible");

    return reader;
}
} // namespace

AudioSource::AudioSource (const juce::File& source, int numChannels)
    : file (source), reader (openReader (source)),
      outputChannels (numChannels > 0 ? numChannels : (int) reader->numChannels)
{
}

void AudioSource::read (juce::AudioBuffer<float>& buffer, juce::int64 startFrame, int numFrames)
{
    const auto numFileChannels = (int) reader->numChannels;
    const auto direct = numFileChannels == outputChannels;

    if (! direct)
        fileChannels.setSize (numFileChannels, numFrames, false, false, true);

    auto& target = direct ? buffer : fileChannels;

    if (! reader->read (target.getArrayOfWritePointers(), numFileChannels, startFrame, numFrames))
        throw HostError (file.getFullPathName() + ": the file is damaged after frame " + juce::String (startFrame));

    if (direct)
        return;

    for (int channel = 0; channel < outputChannels; ++channel)
        buffer.copyFrom (channel, 0, fileChannels, 0, 0, numFrames);

    if (numFileChannels > outputChannels)
    {
        buffer.addFrom (0, 0, fileChannels, 1, 0, numFrames);
        buffer.applyGain (0, 0, numFrames, 0.5f);
    }
}

AudioSink::AudioSink (const juce::File& file, Encoding encoding, double sampleRate, int numChannels) : staged (file)
{
    if (encoding == Encoding::flac24)
    {
        writer = compressedFiles::createFlacWriter (staged.hidden(), sampleRate, numChannels);
        return;
    }

    auto output = staged.open();
    stream = output.get();

    // 32 bits are floats in JUCE's WAV writer.
    const auto bits = encoding == Encoding::wavFloat ? 32 : 24;
    writer.reset (
        juce::WavAudioFormat().createWriterFor (output.get(), sampleRate, (unsigned int) numChannels, bits, {}, 0));

    if (writer == nullptr)
        throw HostError ("cannot write a WAV file at " + juce::String (sampleRate) + " Hz");

    output.release();
}

void AudioSink::write (const juce::AudioBuffer<float>& buffer, int numFrames)
{
    const auto isWritten = writer->isFloatingPoint() ? writer->writeFromAudioSampleBuffer (buffer, 0, numFrames)
                                                     : writeRounded (buffer, numFrames);

    if (! isWritten)
        fail();
}

/** JUCE's own conversion rounds to 32 bits and cuts the lower ones off: samples of 24 bits would not come through unchanged. */
bool AudioSink::writeRounded (const juce::AudioBuffer<float>& buffer, int numFrames)
{
    std::array<const int*, 3> channels {}; // the last one is null, which tells JUCE where they end

    for (int channel = 0; channel < buffer.getNumChannels(); ++channel)
    {
        auto& samples = integers[(std::size_t) channel];
        samples.resize ((std::size_t) numFrames);

        for (int frame = 0; frame < numFrames; ++frame)
            samples[(std::size_t) frame] = rounded (buffer.getSample (channel, frame));

        channels[(std::size_t) channel] = samples.data();
    }

    return writer->write (channels.data(), numFrames);
}

/** The nearest of the 24-bit steps, in the upper bits of an integer. */
int AudioSink::rounded (float sample) noexcept
{
    constexpr double stepsToFullScale = 1 << 23;
    constexpr int lowerBits = 1 << 8;
    const auto wanted = std::isnan (sample) ? 0.0 : std::rint ((double) sample * stepsToFullScale);
    const auto possible = std::clamp (wanted, -stepsToFullScale, stepsToFullScale - 1.0);

    clipped += std::abs (wanted) > stepsToFullScale ? 1 : 0;
    return (int) possible * lowerBits;
}

void AudioSink::finish()
{
    // The writer's destructor completes the file too, but cannot tell whether that worked.
    if (! writer->flush() || (stream != nullptr && stream->getStatus().failed()))
        fail();

    writer.reset();
    stream = nullptr;
}

void AudioSink::fail() const
{
    const auto reason = stream != nullptr && stream->getStatus().failed()
                            ? stream->getStatus().getErrorMessage()
                            : juce::String ("the disk is full or the file is too long");
    throw HostError ("cannot write " + staged.target().getFullPathName() + ": " + reason);
}
