#include "screens/base/file_address.h"

#include <gtest/gtest.h>

#include <QSysInfo>

namespace marlet::test {
namespace {

std::optional<std::filesystem::path> pathOf(const QByteArray& address) {
    return FileAddress::pathOf(QUrl::fromEncoded(address));
}

TEST(FileAddresses, EveryByteOfANameIsKeptUtf8OrNot) {
    std::string name = "/films/";
    for (int byte = 1; byte < 256; byte++)
        if (byte != '/') name += static_cast<char>(byte);
    for (const std::string& path :
         {name, std::string("/a/Caf\xE9 (1963).mp4"), std::string("/a/Amélie #1?.mp4"),
          std::string("/a/100 %E9.mp4"), std::string("/"), std::string("//twice//")})
        EXPECT_EQ(FileAddress::pathOf(FileAddress::of(path)), path);
    EXPECT_EQ(pathOf("file:///a/Caf%E9.mp4"), "/a/Caf\xE9.mp4");
    EXPECT_EQ(pathOf("file:///a/Am%C3%A9lie.mp4"), "/a/Amélie.mp4");
    EXPECT_EQ(FileAddress::of("/a/B, c (1963).mp4"), QUrl("file:///a/B, c (1963).mp4"));
    EXPECT_EQ(FileAddress::of("/a/Caf\xE9 ü.mp4").toEncoded(), "file:///a/Caf%E9%20%C3%BC.mp4");
}

TEST(FileAddresses, ThisComputersOwnNameIsThisComputer) {
    EXPECT_EQ(pathOf("file://localhost/a.mp4"), "/a.mp4");
    EXPECT_EQ(pathOf("FILE:/a.mp4"), "/a.mp4");
    EXPECT_EQ(pathOf("file://" + QSysInfo::machineHostName().toLatin1() + "/a.mp4"), "/a.mp4");
}

TEST(FileAddresses, WhatIsElsewhereOrCantBeAPathHasNone) {
    for (const char* address :
         {"http://example.org/a.mp4", "smb://server/a.mp4", "file://another.example.org/a.mp4",
          "file:relative.mp4", "file:///a%00b.mp4", "a.mp4", ""})
        EXPECT_EQ(pathOf(address), std::nullopt) << address;
}

}  // namespace
}  // namespace marlet::test
