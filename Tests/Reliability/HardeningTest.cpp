// Reads the programs as the linker left them: what cmake/Hardening.cmake asks for must have arrived.

#include <elf.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Support/TempFolder.h"

namespace quillmere::testing {
namespace {

// A program for a 64-bit machine. Everything in it is read with its bounds checked.
class Binary {
public:
    explicit Binary(const std::string& file) : bytes_(readText(file)), header_(at<Elf64_Ehdr>(0)) {
        if (std::memcmp(header_.e_ident, ELFMAG, SELFMAG) != 0 || header_.e_ident[EI_CLASS] != ELFCLASS64)
            throw std::runtime_error(file + " is no 64-bit program");
        for (std::size_t i = 0; i < header_.e_phnum; ++i)
            segments_.push_back(at<Elf64_Phdr>(header_.e_phoff + i * sizeof(Elf64_Phdr)));
        for (std::size_t i = 0; i < header_.e_shnum; ++i)
            sections_.push_back(at<Elf64_Shdr>(header_.e_shoff + i * sizeof(Elf64_Shdr)));
    }

    [[nodiscard]] unsigned type() const { return header_.e_type; }
    [[nodiscard]] const std::vector<Elf64_Phdr>& segments() const { return segments_; }

    [[nodiscard]] std::optional<Elf64_Phdr> segment(unsigned type) const {
        const auto found = std::ranges::find(segments_, type, &Elf64_Phdr::p_type);
        return found == segments_.end() ? std::nullopt : std::optional(*found);
    }
    // The value of an entry of the dynamic section.
    [[nodiscard]] std::optional<std::uint64_t> dynamic(std::int64_t tag) const {
        const std::optional<Elf64_Phdr> segment = this->segment(PT_DYNAMIC);
        if (!segment) return std::nullopt;
        for (std::size_t i = 0; i < segment->p_filesz / sizeof(Elf64_Dyn); ++i) {
            const auto entry = at<Elf64_Dyn>(segment->p_offset + i * sizeof(Elf64_Dyn));
            if (entry.d_tag == tag) return entry.d_un.d_val;
        }
        return std::nullopt;
    }
    // The names that it takes from shared libraries, and those that it offers to them.
    [[nodiscard]] std::vector<std::string> imports() const { return dynamicNames(true); }
    [[nodiscard]] std::vector<std::string> exports() const { return dynamicNames(false); }

private:
    [[nodiscard]] std::vector<std::string> dynamicNames(bool ofOthers) const {
        const auto table =
            std::ranges::find(sections_, static_cast<unsigned>(SHT_DYNSYM), &Elf64_Shdr::sh_type);
        if (table == sections_.end()) return {};
        const Elf64_Shdr& names = sections_.at(table->sh_link);
        std::vector<std::string> found;
        for (std::size_t i = 0; i < table->sh_size / sizeof(Elf64_Sym); ++i) {
            const auto symbol = at<Elf64_Sym>(table->sh_offset + i * sizeof(Elf64_Sym));
            if ((symbol.st_shndx == SHN_UNDEF) == ofOthers)
                found.push_back(text(names.sh_offset + symbol.st_name));
        }
        return found;
    }
    template <typename Record>
    [[nodiscard]] Record at(std::size_t offset) const {
        if (offset > bytes_.size() || bytes_.size() - offset < sizeof(Record))
            throw std::runtime_error("a program that has been cut short");
        Record record;
        std::memcpy(&record, bytes_.data() + offset, sizeof(Record));
        return record;
    }
    [[nodiscard]] std::string text(std::size_t offset) const {
        return bytes_.substr(offset, bytes_.find('\0', offset) - offset);
    }

    std::string bytes_;
    Elf64_Ehdr header_;
    std::vector<Elf64_Phdr> segments_;
    std::vector<Elf64_Shdr> sections_;
};

// The built programs; in a test's name there is room for the last part of a path only.
std::vector<std::string> programs() {
    std::istringstream list(QUILLMERE_PROGRAMS);
    std::vector<std::string> programs;
    for (std::string program; std::getline(list, program, '|');)
        programs.push_back(program);
    return programs;
}

std::string nameOf(const ::testing::TestParamInfo<std::string>& tested) {
    std::string name = std::filesystem::path(tested.param).filename().string();
    std::ranges::replace(name, '-', '_');
    return name;
}

class HardeningTest : public ::testing::TestWithParam<std::string> {
protected:
    const Binary binary{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Programs, HardeningTest, ::testing::ValuesIn(programs()), nameOf);

TEST_P(HardeningTest, LoadsAtAnAddressThatNobodyCanGuess) {
    EXPECT_EQ(binary.type(), static_cast<unsigned>(ET_DYN));
    EXPECT_TRUE(binary.dynamic(DT_FLAGS_1).value_or(0) & DF_1_PIE);
    EXPECT_FALSE(binary.dynamic(DT_TEXTREL)) << "code that the loader writes to";
}

TEST_P(HardeningTest, ResolvesItsFunctionsAtTheStartAndLocksTheirTable) {
    EXPECT_TRUE(binary.segment(PT_GNU_RELRO));
    EXPECT_TRUE(binary.dynamic(DT_FLAGS_1).value_or(0) & DF_1_NOW);
}

TEST_P(HardeningTest, HoldsNothingThatCanBeWrittenAndRun) {
    const std::optional<Elf64_Phdr> stack = binary.segment(PT_GNU_STACK);
    ASSERT_TRUE(stack) << "without it the stack can be run";
    for (const Elf64_Phdr& segment : binary.segments()) {
        constexpr unsigned both = PF_W | PF_X;
        EXPECT_NE(segment.p_flags & both, both) << "segment of type " << segment.p_type;
    }
}

TEST_P(HardeningTest, LooksForLibrariesNowhereButInTheSystem) {
    EXPECT_FALSE(binary.dynamic(DT_RPATH));
    EXPECT_FALSE(binary.dynamic(DT_RUNPATH));
}

TEST_P(HardeningTest, AsksNoShell) {
    for (const std::string& import : binary.imports())
        EXPECT_TRUE(import != "system" && import != "popen" && import != "wordexp") << import;
}

TEST_P(HardeningTest, OffersNothingOfItsOwnToLibraries) {
    const std::vector<std::string> exports = binary.exports();
    ASSERT_FALSE(exports.empty()) << "not even what it shares with the C++ library";
    for (const std::string& name : exports)
        EXPECT_EQ(name.find("9quillmere"), std::string::npos) << name;
}

TEST_P(HardeningTest, ChecksItsStackItsBuffersAndItsIndices) {
    const std::vector<std::string> imports = binary.imports();
    const auto hasOne = [&](std::string_view name) {
        return std::ranges::find(imports, name) != imports.end();
    };
    EXPECT_TRUE(hasOne("__stack_chk_fail"));
    EXPECT_TRUE(std::ranges::any_of(imports, [](std::string_view name) {
        return name.starts_with("__") && name.ends_with("_chk");
    })) << "no function of the C library that knows the size of its buffer";
    EXPECT_TRUE(hasOne("_ZSt21__glibcxx_assert_failPKciS0_S0_")) << "no index is checked";
}

}  // namespace
}  // namespace quillmere::testing
