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
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
