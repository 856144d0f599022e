// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>

#include <juce_core/juce_core.h>

/** A file that is filled again for each input. Not through JUCE, which waits for the disk each time. */
class FuzzedFile
{
public:
    explicit FuzzedFile (const juce::String& ending) : file (ending) {}

    [[nodiscard]] const juce::File& fill (const std::uint8_t* data, std::size_t size) const
    {
        std::ofstream stream (file.getFile().getFullPathName().toStdString(), std::ios::binary | std::ios::trunc);
        stream.write (reinterpret_cast<const char*> (data), (std::streamsize) size);
        return file.getFile();
    }

private:
    juce::TemporaryFile file;
};
