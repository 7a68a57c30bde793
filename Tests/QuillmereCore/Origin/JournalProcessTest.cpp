// Several programs at one journal. Nothing here starts a thread: the processes are forked.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "QuillmereCore/Origin/Journal.h"
#include "QuillmereCore/Util/Failure.h"
#include "Support/ChildProcess.h"
#include "Support/SampleRecipe.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

using testing::ChildProcess;
using testing::sampleEntry;
using testing::TempFolder;

constexpr int each = 300;  // lines per program

// Programs that each write their lines, numbered.
void writeFromSeveral(const Journal& journal) {
    std::vector<std::unique_ptr<ChildProcess>> programs;
    for (const char name : {'a', 'b', 'c'}) {
        programs.push_back(std::make_unique<ChildProcess>([&journal, name] {
            for (int i = 0; i < each; ++i)
                journal.append(sampleEntry(name, name, std::to_string(i)));
            return true;
        }));
    }
    for (const auto& program : programs)
        EXPECT_TRUE(program->succeeded());
}

TEST(JournalProcess, ProgramsThatWriteAtOnceLoseNoLine) {
    const TempFolder folder;
    const Journal journal(folder / "journal.jsonl");
    writeFromSeveral(journal);
    std::map<char, int> next;
    for (const JournalEntry& entry : journal.newest(10'000)) {
        const char name = entry.digests.bytes[0];
        EXPECT_EQ(entry.file, std::to_string(next[name]++)) << "lines of one program keep their order";
    }
    EXPECT_EQ(next, (std::map<char, int>{{'a', each}, {'b', each}, {'c', each}}));
}

TEST(JournalProcess, ProgramsThatMakeRoomAtOnceLoseNoLine) {
    const TempFolder folder;
    const std::uint64_t lineBytes = encodeJSON(sampleEntry('a', 'b', "100")).size() + 1;
    // Room for all, in many pieces: every piece but the last is full when it moves on.
    const Journal journal(folder / "journal.jsonl", {.segmentBytes = 20 * lineBytes, .segments = 60});
    writeFromSeveral(journal);
    std::map<char, int> count;
    for (const JournalEntry& entry : journal.newest(10'000))
        ++count[entry.digests.bytes[0]];
    EXPECT_EQ(count, (std::map<char, int>{{'a', each}, {'b', each}, {'c', each}}));
}

TEST(JournalProcess, AFullDiskCostsTheLineThatMetIt) {
    const TempFolder folder;
    const Journal journal(folder / "journal.jsonl");
    const std::uint64_t lineBytes = encodeJSON(sampleEntry('a', 'b', "1")).size() + 1;
    ChildProcess program([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{2 * lineBytes + lineBytes / 2, RLIM_INFINITY};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return false;
        journal.append(sampleEntry('a', 'b', "1"));
        journal.append(sampleEntry('a', 'b', "2"));
        try {
            journal.append(sampleEntry('a', 'b', "3"));
        } catch (const FileError&) {
            return true;
        }
        return false;
    });
    EXPECT_TRUE(program.succeeded());
    journal.append(sampleEntry('a', 'b', "4"));
    std::vector<std::string> files;
    for (const JournalEntry& entry : journal.newest(10))
        files.push_back(entry.file);
    EXPECT_EQ(files, (std::vector<std::string>{"1", "2", "4"}));
}

}  // namespace
}  // namespace quillmere
