#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "foundation/bytes.h"

namespace marlet {

/// Exists only while a person's file is being changed; names what is written and where the
/// verified bytes are. At most one, since writes run one at a time.
struct WriteJournal {
    std::filesystem::path file;
    std::filesystem::path temp;  ///< the verified copy, in its work folder
    std::uint64_t size = 0;      ///< of that copy, bytes

    /// Durable when it returns.
    void save() const;
    /// The file's text, and what such a text says; nothing for any other.
    std::string encode() const;
    static std::optional<WriteJournal> decode(ByteView text);
    /// Nothing when there is none or it can't be read.
    static std::optional<WriteJournal> load();
    /// Durable when it returns; throws MFError when it can't be removed.
    static void remove();

    /// Whether the verified copy is still there, as large as it was. One that can't be looked at
    /// isn't taken for gone.
    bool hasCopy() const;
    bool operator==(const WriteJournal&) const = default;
};

}  // namespace marlet
