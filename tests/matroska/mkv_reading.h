#pragma once

#include <memory>
#include <string>
#include <vector>

#include "matroska/mkv_file.h"
#include "support/memory_file.h"
#include "support/mkv_builder.h"

namespace marlet::test {

/// A file of these bytes, open for as long as the object lives.
class OpenMKV {
public:
    explicit OpenMKV(ByteView bytes) : file_(MKVFile::open(memory_.write(bytes))) {}

    explicit operator bool() const { return file_ != nullptr; }
    const MKVFile& operator*() const { return *file_; }
    const MKVFile* operator->() const { return file_.get(); }

    std::vector<MKVBlock> blocks(const std::optional<std::set<int>>& tracks = {}) const {
        std::vector<MKVBlock> all;
        file_->forEachBlock(tracks, {}, [&](const MKVBlock& block) {
            all.push_back(block);
            return true;
        });
        return all;
    }
    /// The frames of all blocks, one behind the other.
    std::vector<Bytes> frames() const {
        std::vector<Bytes> all;
        for (const MKVBlock& block : blocks())
            for (Bytes& frame : file_->data(block)) all.push_back(std::move(frame));
        return all;
    }
    std::vector<std::string> texts() const {
        std::vector<std::string> all;
        for (const Bytes& frame : frames()) all.push_back(textOf(frame));
        return all;
    }
    std::vector<std::int64_t> milliseconds() const {
        std::vector<std::int64_t> all;
        for (const MKVBlock& block : blocks()) all.push_back(block.timeNs / 1'000'000);
        return all;
    }

private:
    MemoryFile memory_;
    std::unique_ptr<MKVFile> file_;
};

}  // namespace marlet::test
