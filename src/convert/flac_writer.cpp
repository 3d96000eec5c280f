#include "convert/flac_writer.h"

#include <FLAC/stream_encoder.h>
#include <fcntl.h>

#include <exception>

#include "foundation/bytes.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/syscalls.h"

namespace marlet::AudioConvert {

namespace {

constexpr unsigned fastest = 0;
/// Three frames of AC3: GPAC's encoder goes wrong on blocks that leave a part of a frame over.
constexpr unsigned framesABlock = 3 * 1536;

struct Deleter {
    void operator()(FLAC__StreamEncoder* encoder) const { FLAC__stream_encoder_delete(encoder); }
};

}  // namespace

/// The encoder and the file behind it. An exception can't cross the library: it waits here.
struct FLACWriter::Encoder {
    std::unique_ptr<FLAC__StreamEncoder, Deleter> encoder{FLAC__stream_encoder_new()};
    FileHandle file;
    std::uint64_t at = 0;
    std::exception_ptr failure;

    static FLAC__StreamEncoderWriteStatus write(const FLAC__StreamEncoder* /*encoder*/,
                                                const FLAC__byte* bytes, std::size_t count,
                                                std::uint32_t /*samples*/, std::uint32_t /*frame*/,
                                                void* self) {
        auto& me = *static_cast<Encoder*>(self);
        try {
            FileOps::writeAll(me.file.get(), {bytes, count}, me.at);
            me.at += count;
            return FLAC__STREAM_ENCODER_WRITE_STATUS_OK;
        } catch (...) {
            me.failure = std::current_exception();
            return FLAC__STREAM_ENCODER_WRITE_STATUS_FATAL_ERROR;
        }
    }

    static FLAC__StreamEncoderSeekStatus seek(const FLAC__StreamEncoder* /*encoder*/,
                                              FLAC__uint64 to, void* self) {
        static_cast<Encoder*>(self)->at = to;
        return FLAC__STREAM_ENCODER_SEEK_STATUS_OK;
    }

    static FLAC__StreamEncoderTellStatus tell(const FLAC__StreamEncoder* /*encoder*/,
                                              FLAC__uint64* at, void* self) {
        *at = static_cast<Encoder*>(self)->at;
        return FLAC__STREAM_ENCODER_TELL_STATUS_OK;
    }

    void check(FLAC__bool went) const {
        if (failure) std::rethrow_exception(failure);
        if (!went) throw MFError("write failed: the FLAC encoder gave up");
    }
};

bool FLACWriter::takes(const Format& format) {
    return format.channels >= 1 && format.channels <= static_cast<int>(FLAC__MAX_CHANNELS) &&
           format.sampleRate >= 1 && format.sampleRate <= FLAC__MAX_SAMPLE_RATE;
}

FLACWriter::FLACWriter(const std::filesystem::path& file, const Format& format)
    : encoder_(std::make_unique<Encoder>()), channels_(format.channels) {
    encoder_->file = FileHandle::open(file, O_WRONLY | O_CREAT | O_TRUNC, "write failed", 0600);
    FLAC__StreamEncoder* const flac = encoder_->encoder.get();
    if (flac == nullptr) throw std::bad_alloc();
    FLAC__stream_encoder_set_channels(flac, static_cast<unsigned>(format.channels));
    FLAC__stream_encoder_set_bits_per_sample(flac, static_cast<unsigned>(format.bits));
    FLAC__stream_encoder_set_sample_rate(flac, format.sampleRate);
    FLAC__stream_encoder_set_compression_level(flac, fastest);
    FLAC__stream_encoder_set_blocksize(flac, framesABlock);
    FLAC__stream_encoder_set_streamable_subset(flac, 0);  // any rate up to the format's own limit
    const auto started = FLAC__stream_encoder_init_stream(flac, &Encoder::write, &Encoder::seek,
                                                          &Encoder::tell, nullptr, encoder_.get());
    if (encoder_->failure) std::rethrow_exception(encoder_->failure);
    if (started != FLAC__STREAM_ENCODER_INIT_STATUS_OK) throw MFError("no 5.1 layout");
}

FLACWriter::~FLACWriter() = default;

void FLACWriter::write(std::span<const std::int32_t> samples) {
    const auto frames = static_cast<unsigned>(samples.size() / static_cast<std::size_t>(channels_));
    encoder_->check(
        FLAC__stream_encoder_process_interleaved(encoder_->encoder.get(), samples.data(), frames));
}

void FLACWriter::finish() {
    encoder_->check(FLAC__stream_encoder_finish(encoder_->encoder.get()));
}

}  // namespace marlet::AudioConvert
