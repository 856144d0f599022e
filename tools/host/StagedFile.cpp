// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/StagedFile.h"

#include <cstddef>
#include <filesystem>
#include <system_error>

#include "host/HostError.h"

namespace
{
[[noreturn]] void refuse (const juce::File& file, const juce::String& reason)
{
    throw HostError ("cannot write " + file.getFullPathName() + ": " + reason);
}

/** A device or a pipe would be replaced by a plain file when the finished file is moved onto it. */
void requirePlainPlace (const juce::File& file)
{
    if (file.isDirectory())
        refuse (file, "it is a folder");

    std::error_code error;
    const auto kind = std::filesystem::status (file.getFullPathName().toStdString(), error).type();

    if (kind != std::filesystem::file_type::not_found && kind != std::filesystem::file_type::regular)
        refuse (file, "it is not a plain file");

    if (! file.getParentDirectory().isDirectory())
        refuse (file, "there is no folder " + file.getParentDirectory().getFullPathName());
}
} // namespace

StagedFile::StagedFile (const juce::File& target)
    : finalFile (target),
      hiddenFile (target.getParentDirectory().getChildFile (
          "." + target.getFileName() + "." + juce::String::toHexString (juce::Random().nextInt()) + ".partial"))
{
    requirePlainPlace (finalFile);

    // If nothing can be written here, that shows now and not after a long render.
    open().reset();
}

StagedFile::~StagedFile() { hiddenFile.deleteFile(); }

std::unique_ptr<juce::FileOutputStream> StagedFile::open() const
{
    hiddenFile.deleteFile();
    auto stream = std::make_unique<juce::FileOutputStream> (hiddenFile);

    if (stream->failedToOpen())
        refuse (finalFile, stream->getStatus().getErrorMessage());

    return stream;
}

void StagedFile::write (const void* data, std::size_t numBytes) const
{
    auto stream = open();
    stream->write (data, numBytes);
    stream->flush();

    if (stream->getStatus().failed())
        refuse (finalFile, stream->getStatus().getErrorMessage());
}

void StagedFile::commit()
{
    // The standard library's renaming replaces an older file in one step; JUCE's deletes it first.
    std::error_code error;
    std::filesystem::rename (hiddenFile.getFullPathName().toStdString(), finalFile.getFullPathName().toStdString(),
                             error);

    if (error)
        refuse (finalFile, error.message());
}
