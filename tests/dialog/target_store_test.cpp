// The last targets in the user's profile.
#include "dialog/target_store.h"

#include <gtest/gtest.h>

#include <windows.h>

#include "dialog/path_state.h"
#include "tests/dialog/dialog_run.h"

using namespace tests;

namespace
{
// Another program's value in the place of the list.
void put_value(DWORD type, const std::string &bytes)
{
    HKEY key = nullptr;
    ASSERT_EQ(
        RegCreateKeyExA(HKEY_CURRENT_USER, target_store_key, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
        ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExA(key, target_store_value, 0, type, reinterpret_cast<const BYTE *>(bytes.data()),
                             static_cast<DWORD>(bytes.size())),
              ERROR_SUCCESS);
    RegCloseKey(key);
}
}

TEST(TargetStore, AnEmptyProfileHasNoTargets)
{
    const PrivateRegistry registry;
    EXPECT_EQ(load_targets(), LastTargets{});
}

TEST(TargetStore, WhatIsSavedIsLoaded)
{
    const PrivateRegistry registry;
    const LastTargets targets = {"C:\\my images\\disc \xE4.lif:SUB/FILE", "7:", std::string(259, 'x')};
    ASSERT_TRUE(save_targets(targets));
    EXPECT_EQ(load_targets(), targets);
    ASSERT_TRUE(save_targets({"0:"}));
    EXPECT_EQ(load_targets(), LastTargets{"0:"});
}

TEST(TargetStore, AnEmptyListIsSavedToo)
{
    const PrivateRegistry registry;
    ASSERT_TRUE(save_targets({"0:"}));
    ASSERT_TRUE(save_targets({}));
    EXPECT_EQ(load_targets(), LastTargets{});
}

TEST(TargetStore, AValueOfAnotherKindIsNoList)
{
    const PrivateRegistry registry;
    put_value(REG_SZ, "0:");
    EXPECT_EQ(load_targets(), LastTargets{});
    put_value(REG_BINARY, std::string("0:\0\0", 4));
    EXPECT_EQ(load_targets(), LastTargets{});
}

TEST(TargetStore, AHugeValueIsNoList)
{
    const PrivateRegistry registry;
    put_value(REG_MULTI_SZ, std::string(0x20000, 'x') + std::string(2, '\0'));
    EXPECT_EQ(load_targets(), LastTargets{});
}

TEST(PathState, TellsFilesFoldersAndNothing)
{
    const ImageFolder disc;
    EXPECT_EQ(path_state(disc.image.c_str()), PathState::file);
    EXPECT_EQ(path_state(disc.folder.c_str()), PathState::folder);
    EXPECT_EQ(path_state((disc.folder + "\\").c_str()), PathState::folder);
    EXPECT_EQ(path_state((disc.folder + "\\none.lif").c_str()), PathState::missing);
    EXPECT_EQ(path_state((disc.folder + "\\*.lif").c_str()), PathState::missing);
    EXPECT_EQ(path_state(""), PathState::missing);
}
