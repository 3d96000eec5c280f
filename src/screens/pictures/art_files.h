#pragma once

#include <QImage>
#include <QSize>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "screens/pictures/art_address.h"
#include "sources/http_cache.h"

namespace marlet {

/// Pictures that lie on a disk: read and decoded by workers, never by the window's thread.
class ArtFiles {
public:
    ArtFiles();

    /// The picture of a file of ours or in an MP4; null when there is none.
    static QImage local(const Art& art, const QSize& wanted);
    /// What tells this state of the file from a later one; empty when it isn't a file.
    static std::string stampOf(const std::filesystem::path& file);

    /// A picture of a catalogue that was fetched before, by its address; null when there is none.
    QImage fetched(const std::string& url, const QSize& wanted);
    /// Decodes an answer, and keeps it on the disk if it is a picture.
    QImage take(const std::string& url, const HttpAnswer& answer, const QSize& wanted);

private:
    std::mutex lock_;
    KeylessCache cache_;
};

}  // namespace marlet
