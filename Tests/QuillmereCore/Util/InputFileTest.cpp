#include "QuillmereCore/Util/InputFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <filesystem>
#include <span>
#include <string>
#include <system_error>

#include "QuillmereCore/Util/Failure.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::TempFolder;
using testing::writeText;

// Why the file of that name cannot be opened; none if it can.
std::error_code refusalOf(const fs::path& file) {
    try {
        const InputFile opened(file);
        return {};
    } catch (const FileError& error) {
        EXPECT_EQ(error.file(), file);
        return error.reason();
    }
}

TEST(InputFile, IsReadWhole) {
    const TempFolder folder;
    writeText(folder / "file", "seven bytes, and more");
    InputFile file(folder / "file");
    EXPECT_EQ(file.path(), folder / "file");
    EXPECT_EQ(file.size(), 21U);
    EXPECT_EQ(file.readAll(), "seven bytes, and more");
}

TEST(InputFile, IsReadInPieces) {
    const TempFolder folder;
    writeText(folder / "file", "abcde");
    InputFile file(folder / "file");
    std::array<char, 3> piece{};
    EXPECT_TRUE(file.read(std::as_writable_bytes(std::span(piece))));
    EXPECT_EQ(std::string(piece.begin(), piece.end()), "abc");
    EXPECT_FALSE(file.read(std::as_writable_bytes(std::span(piece))));
}

TEST(InputFile, HoldsZerosForWhatWasCutMeanwhile) {
    const TempFolder folder;
    writeText(folder / "file", "abcde");
    InputFile file(folder / "file");
    fs::resize_file(folder / "file", 2);
    EXPECT_EQ(file.readAll(), std::string("ab\0\0\0", 5));
}

TEST(InputFile, SaysWhyThereIsNone) {
    const TempFolder folder;
    fs::create_directory(folder / "folder");
    EXPECT_EQ(refusalOf(folder / "none"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(refusalOf(folder / "folder"), std::errc::is_a_directory);
}

// Nobody ever writes into this pipe.
TEST(InputFile, DoesNotWaitForAPipe) {
    const TempFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(refusalOf(folder / "pipe"), std::errc::not_supported);
}

TEST(InputFile, IsReachedByALink) {
    const TempFolder folder;
    writeText(folder / "file", "abc");
    fs::create_symlink("file", folder / "link");
    EXPECT_EQ(InputFile(folder / "link").readAll(), "abc");
}

}  // namespace
}  // namespace quillmere
