#include "platformroot.h"

#include <gtest/gtest.h>

#include "temproot.h"

TEST(PlatformRoot, FixedPathsResolveUnderTheRootAndResourcesStay) {
    TempRoot root;
    EXPECT_EQ(platformPath("/etc/taskinfo.conf"), root.path() + "/etc/taskinfo.conf");
    EXPECT_EQ(platformPath("etc/toxlocal.conf"), root.path() + "/etc/toxlocal.conf");
    EXPECT_EQ(platformPath(":/conf/taskinfo.conf"), ":/conf/taskinfo.conf");
}

TEST(PlatformRoot, TheRootOptionOverridesTheEnvironmentUntilCleared) {
    TempRoot root;
    setPlatformRoot("/tmp/other-root/");
    EXPECT_EQ(platformPath("/dev/video0"), "/tmp/other-root/dev/video0");
    setPlatformRoot(QString());
    EXPECT_EQ(platformPath("/dev/video0"), root.path() + "/dev/video0");
}

TEST(PlatformRoot, AHostNeverResolvesToItsOwnRoot) {
    TempRoot root;
    qputenv("LUMASPECTER_ROOT", "/");
    EXPECT_NE(platformPath("/etc/taskinfo.conf"), "/etc/taskinfo.conf");
    setPlatformRoot("/");
    EXPECT_NE(platformPath("/etc/taskinfo.conf"), "/etc/taskinfo.conf");
    setPlatformRoot(QString());
}
