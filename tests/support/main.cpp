#include <gtest/gtest.h>

#include <cstdlib>

#include "support/temp_folder.h"

int main(int argc, char** argv) {
    // No test may see the person's own folders, key or language.
    const marlet::test::OwnHome home;
    setenv("LC_ALL", "en_US.UTF-8", 1);
    setenv("LANGUAGE", "en", 1);
    unsetenv("MARLET_TMDB_TOKEN");
    unsetenv("MARLET_NO_KEYCHAIN");
    // No test may reach the real services, whatever it forgets to set: nobody listens there.
    setenv("MARLET_TMDB_API", "http://127.0.0.1:9/3", 1);
    setenv("MARLET_TMDB_IMAGES", "http://127.0.0.1:9", 1);
    setenv("MARLET_APPLE_TV_API", "http://127.0.0.1:9/uts/v3/", 1);
    setenv("MARLET_ITUNES_API", "http://127.0.0.1:9/", 1);
    // Nor the person's desktop.
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/dev/null", 1);
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/dev/null", 1);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
