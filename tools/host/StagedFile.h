// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>

#include <juce_core/juce_core.h>

/** A file that appears complete or not at all: it is written under a hidden name in the target's folder, and replaces an
    older file only when it is committed. If it is destroyed before that, it leaves nothing behind. */
class StagedFile
{
public:
    /** @throws HostError if nothing can be written at the target's place */
    explicit StagedFile (const juce::File& target);
    ~StagedFile();

    [[nodiscard]] const juce::File& target() const noexcept { return finalFile; }

    /** For a library that opens the file itself. It must have closed it before commit. */
    [[nodiscard]] const juce::File& hidden() const noexcept { return hiddenFile; }

    /** Opens the hidden file, empty. The stream must be closed before commit.
        @throws HostError */
    [[nodiscard]] std::unique_ptr<juce::FileOutputStream> open() const;

    /** Writes the whole content.
        @throws HostError */
    void write (const void* data, std::size_t numBytes) const;

    /** @throws HostError */
    void commit();

private:
    juce::File finalFile;
    juce::File hiddenFile;

    JUCE_DECLARE_NON_COPYABLE (StagedFile)
};
