#pragma once

#include <cstdint>

/// The elements that are read or written here (RFC 9559, 5.1; RFC 8794, 11.2).
namespace marlet::ElementID {

enum : std::uint32_t {
    ebml = 0x1A45DFA3,
    ebmlVersion = 0x4286,
    ebmlReadVersion = 0x42F7,
    ebmlMaxIDLength = 0x42F2,
    ebmlMaxSizeLength = 0x42F3,
    docType = 0x4282,
    docTypeVersion = 0x4287,
    docTypeReadVersion = 0x4285,

    segment = 0x18538067,
    seekHead = 0x114D9B74,
    seek = 0x4DBB,
    seekID = 0x53AB,
    seekPosition = 0x53AC,
    info = 0x1549A966,
    tracks = 0x1654AE6B,
    cluster = 0x1F43B675,
    cues = 0x1C53BB6B,
    cuePoint = 0xBB,
    cueTrackPositions = 0xB7,
    cueClusterPosition = 0xF1,
    attachments = 0x1941A469,
    chapters = 0x1043A770,
    tags = 0x1254C367,

    timestampScale = 0x2AD7B1,
    duration = 0x4489,
    title = 0x7BA9,
    muxingApp = 0x4D80,
    writingApp = 0x5741,

    trackEntry = 0xAE,
    trackNumber = 0xD7,
    trackUID = 0x73C5,
    trackType = 0x83,
    codecID = 0x86,
    codecPrivate = 0x63A2,
    codecDelay = 0x56AA,
    seekPreRoll = 0x56BB,
    language = 0x22B59C,
    languageBCP47 = 0x22B59D,
    name = 0x536E,
    flagDefault = 0x88,
    flagForced = 0x55AA,
    flagEnabled = 0xB9,
    defaultDuration = 0x23E383,
    blockAdditionMapping = 0x41E4,
    blockAddIDType = 0x41E7,

    video = 0xE0,
    pixelWidth = 0xB0,
    pixelHeight = 0xBA,
    colour = 0x55B0,
    bitsPerChannel = 0x55B2,
    transferCharacteristics = 0x55BA,
    masteringMetadata = 0x55D0,

    audio = 0xE1,
    channels = 0x9F,
    samplingFrequency = 0xB5,
    bitDepth = 0x6264,

    contentEncodings = 0x6D80,
    contentEncoding = 0x6240,
    contentEncodingOrder = 0x5031,
    contentEncodingScope = 0x5032,
    contentEncodingType = 0x5033,
    contentCompression = 0x5034,
    contentCompAlgo = 0x4254,
    contentCompSettings = 0x4255,

    editionEntry = 0x45B9,
    chapterAtom = 0xB6,
    chapterTimeStart = 0x91,
    chapterFlagHidden = 0x98,
    chapterDisplay = 0x80,
    chapString = 0x85,
    chapLanguage = 0x437C,

    timestamp = 0xE7,
    simpleBlock = 0xA3,
    blockGroup = 0xA0,
    block = 0xA1,
    blockDuration = 0x9B,
};

}  // namespace marlet::ElementID
