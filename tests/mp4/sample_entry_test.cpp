#include "mp4/sample_entry.h"

#include <gtest/gtest.h>

#include "support/box_builder.h"

namespace marlet::test {
namespace {

using Length = std::optional<std::int64_t>;

Bytes stsd(const std::vector<Bytes>& entries, std::uint8_t version = 0) {
    return joined({Bytes{version, 0, 0, 0}, be32(static_cast<std::uint32_t>(entries.size())),
                   joined(entries)});
}

/// Of a single entry whose content has that length and, as sound, that version.
Length fieldsOf(std::string_view type, std::size_t content, std::uint16_t soundVersion = 0,
                std::uint8_t stsdVersion = 0) {
    Bytes fields(content);
    if (content >= 10) fields = patched(fields, 8, be16(soundVersion));
    const Bytes payload = stsd({box(type, fields)}, stsdVersion);
    const SampleEntries parts = sampleEntries(payload);
    return fixedFieldsLength(payload, parts.version(), parts.entries.at(0));
}

TEST(SampleEntries, AreTheBoxesBehindTheCount) {
    const Bytes payload = stsd({box("avc1", Bytes(80)), box("hvc1", Bytes(90))});
    const SampleEntries parts = sampleEntries(payload);
    ASSERT_EQ(parts.entries.size(), 2U);
    EXPECT_EQ(parts.entries[0].code, boxCode("avc1"));
    EXPECT_EQ(parts.entries[1].end, static_cast<std::int64_t>(payload.size()));
    EXPECT_EQ(parts.statedCount(), 2U);
    EXPECT_EQ(parts.version(), 0);
    EXPECT_TRUE(parts.tail.empty());
}

TEST(SampleEntries, WhatIsNoEntryIsTheTail) {
    const Bytes payload = joined({stsd({box("avc1", Bytes(80))}), Bytes(5)});
    EXPECT_EQ(sampleEntries(payload).tail.size(), 5U);
    EXPECT_EQ(sampleEntries(joined({stsd({}), boxHeader("avc1", 3)})).tail.size(), 8U);
}

TEST(SampleEntries, OfACutPayloadAreNone) {
    for (std::size_t length = 0; length <= 8; length++) {
        const Bytes payload(length);
        const SampleEntries parts = sampleEntries(payload);
        EXPECT_TRUE(parts.entries.empty() && parts.tail.empty());
        EXPECT_EQ(parts.header.size(), length);
    }
}

TEST(FixedFields, OfPicturesAre78Bytes) {
    for (const char* type : {"avc1", "avc3", "hvc1", "hev1", "mp4v", "dvh1", "encv"})
        EXPECT_EQ(fieldsOf(type, 100), Length(78)) << type;
    EXPECT_EQ(fieldsOf("avc1", 78), Length(78));
}

TEST(FixedFields, OfSoundAre28Bytes) {
    for (const char* type : {"mp4a", "ac-3", "ec-3", "alac", "fLaC", "Opus", "enca"})
        EXPECT_EQ(fieldsOf(type, 100), Length(28)) << type;
}

TEST(FixedFields, OfQuickTimeSoundGrowWithItsVersion) {
    EXPECT_EQ(fieldsOf("mp4a", 100, 1), Length(44));
    EXPECT_EQ(fieldsOf("mp4a", 100, 2), Length(64));
    EXPECT_EQ(fieldsOf("mp4a", 100, 3), Length());
    EXPECT_EQ(fieldsOf("mp4a", 100, 1, 1), Length(28)) << "version 1 of ISO/IEC 14496-12";
}

TEST(FixedFields, OfOtherStreamsAreKnownWhereTheyMatter) {
    EXPECT_EQ(fieldsOf("tx3g", 100), Length(38));
    EXPECT_EQ(fieldsOf("mp4s", 100), Length(8));
    EXPECT_EQ(fieldsOf("c608", 8), Length(8));
    EXPECT_EQ(fieldsOf("text", 100), Length()) << "FFmpeg and QuickTime mean different fields";
    EXPECT_EQ(fieldsOf("zzzz", 100), Length());
}

TEST(FixedFields, OfATooShortEntryAreNone) {
    EXPECT_EQ(fieldsOf("avc1", 77), Length());
    EXPECT_EQ(fieldsOf("mp4a", 27), Length());
    EXPECT_EQ(fieldsOf("mp4a", 43, 1), Length());
    EXPECT_EQ(fieldsOf("mp4s", 7), Length());
}

}  // namespace
}  // namespace marlet::test
