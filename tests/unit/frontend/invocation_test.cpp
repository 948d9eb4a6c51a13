#include "frontend/invocation.h"

#include <gtest/gtest.h>

TEST(FileStem, EndsInFrontOfTheLastDotOfTheFileName) {
    EXPECT_EQ(fileStem("sign.cgi"), "sign");
    EXPECT_EQ(fileStem("a.b.c"), "a.b");
    EXPECT_EQ(fileStem("sign."), "sign");
    EXPECT_EQ(fileStem("sign"), "sign");
}

TEST(FileStem, BeginsBehindTheLastSeparatorOfEitherKind) {
    EXPECT_EQ(fileStem("/srv/bin/sign.cgi"), "sign");
    EXPECT_EQ(fileStem("C:\\cgi\\sign.cgi"), "sign");
    EXPECT_EQ(fileStem("a/b\\c"), "c");
    EXPECT_EQ(fileStem("a\\b/c"), "c");
}

TEST(FileStem, TakesNoDotOfAFolderForAnExtension) {
    EXPECT_EQ(fileStem("/srv/v1.2/sign"), "sign");
    EXPECT_EQ(fileStem("./sign"), "sign");
    EXPECT_EQ(fileStem("C:\\v1.2\\sign"), "sign");
}

TEST(FileStem, IsEmptyWhenNothingStandsInFrontOfTheDot) {
    EXPECT_EQ(fileStem(".cgi"), "");
    EXPECT_EQ(fileStem("/srv/.cgi"), "");
    EXPECT_EQ(fileStem("/srv/"), "");
    EXPECT_EQ(fileStem("/srv.d/"), "");
    EXPECT_EQ(fileStem(""), "");
    EXPECT_EQ(fileStem("."), "");
    EXPECT_EQ(fileStem("/"), "");
}

TEST(IsNphInvocation, HoldsForStemsThatBeginWithThePrefix) {
    for (const char* path : {"nph-sign.cgi", "nph-", "nph-.cgi", "/srv/bin/nph-x", "C:\\cgi\\nph-x",
                             "nph-a.b.c", "/nph-", "./nph-sign"}) {
        EXPECT_TRUE(isNphInvocation(path)) << path;
    }
}

TEST(IsNphInvocation, FailsForEveryOtherName) {
    for (const char* path :
         {"nph.cgi", "NPH-x", "Nph-x", "nph", "", "/srv/nph-dir/x", "nph-dir\\x", "nph-/", "xnph-",
          "nph.-x", " nph-x", "nph_x", ".nph-x", "sign.nph-x"}) {
        EXPECT_FALSE(isNphInvocation(path)) << path;
    }
}
