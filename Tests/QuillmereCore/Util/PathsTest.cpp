#include "QuillmereCore/Util/Paths.h"

#include <gtest/gtest.h>

#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::TempFolder;

TEST(Paths, ArePlainWithoutDotsDoubledSlashesAndASlashAtTheEnd) {
    EXPECT_EQ(Paths::plain("/a//b/./c/"), "/a/b/c");
    EXPECT_EQ(Paths::plain("/a/b/../c"), "/a/c");
    EXPECT_EQ(Paths::plain("/.."), "/");
    EXPECT_EQ(Paths::plain("/"), "/");
    EXPECT_EQ(Paths::plain("."), fs::current_path());
    EXPECT_EQ(Paths::plain("a/b"), fs::current_path() / "a/b");
}

TEST(Paths, TheFolderAboveALinkIsThatOfWhatItLeadsTo) {
    const TempFolder folder;
    fs::create_directories(folder / "far/away");
    fs::create_directory(folder / "near");
    fs::create_directory_symlink(folder / "far/away", folder / "near/link");
    const fs::path target = fs::canonical(folder.path());
    EXPECT_EQ(Paths::plain(folder / "near/link/.."), target / "far");
    EXPECT_EQ(Paths::plain(folder / "near/link/../new/x"), target / "far/new/x");
    EXPECT_EQ(Paths::plain(folder / "near/link/x"), folder / "near/link/x") << "other links stay as they are";
}

}  // namespace
}  // namespace quillmere
