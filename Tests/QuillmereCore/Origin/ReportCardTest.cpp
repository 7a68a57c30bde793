#include "QuillmereCore/Origin/ReportCard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "QuillmereCore/Model/Trainer.h"
#include "QuillmereCore/Origin/ReportPage.h"
#include "QuillmereCore/Util/Failure.h"
#include "Support/LearnedClips.h"
#include "Support/Processor.h"
#include "Support/Signals.h"
#include "Support/XMLDocument.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::XMLDocument;
using Kind = ReportCard::Blemish::Kind;

// A folder with one of everything, learned for a moment.
class Reporting : public ::testing::Test {
protected:
    Reporting() {
        constexpr int rate = 8000;
        for (int i = 0; i < 4; ++i)
            testing::writeWAV(folder / ("bar " + std::to_string(i) + ".wav"),
                              testing::struckTone(220 + 120 * i, 0.2, rate), rate);
        testing::writeWAV(folder / "bar 2 again.wav", testing::struckTone(460, 0.2, rate), rate);
        testing::writeWAV(folder / "hiss.wav", testing::noise(1, 8 * rate, 0.9F), rate);
        testing::writeWAV(folder / "silent.wav", std::vector<float>(800), rate);
        testing::writeText(folder / "words.wav", "no sound");
        // Its header promises more.
        const std::string whole = testing::readText(folder / "bar 0.wav");
        testing::writeText(folder / "torn.wav", whole.substr(0, whole.size() - 600));
        corpus = Corpus::scan(folder.path());
        TrainingOptions options;
        options.steps = 2;
        options.batchSize = 2;
        options.latentDim = 4;
        options.clipSeconds = 0.25;
        model = ModelTrainer::train(corpus, options, {}, {}, testing::processor());
    }
    [[nodiscard]] ReportCard report(const ReportOptions& options = {}) const {
        return makeReport(model, corpus, testing::processor(), options);
    }
    static std::vector<std::string> names(const ReportCard& card, const std::vector<std::size_t>& clips) {
        std::vector<std::string> names;
        for (const std::size_t clip : clips)
            names.push_back(card.clips[clip].name);
        return names;
    }

    const testing::TempFolder folder;
    CorpusSummary corpus;
    ModelBundle model;
};

TEST_F(Reporting, TheErrorsAreThoseOfTheTraining) {
    const ReportCard card = report();
    ASSERT_EQ(card.clips.size(), 7U);
    EXPECT_EQ(card.corpusName, model.metadata.corpusName);
    // The model's own number is the mean squared error in network units of 50 dB.
    EXPECT_NEAR(card.errorDB, 50 * std::sqrt(model.metadata.finalReconstructionError), 1e-3);
    ASSERT_EQ(card.worst.size(), 3U);
    EXPECT_GE(card.clips[card.worst[0]].errorDB, card.clips[card.worst[1]].errorDB);
    for (const ReportCard::Clip& clip : card.clips)
        EXPECT_LE(clip.errorDB, card.clips[card.worst[0]].errorDB);
}

TEST_F(Reporting, FindsWhatIsThereTwiceAndWhatIsUnlikeAll) {
    const ReportCard card = report();
    std::vector<std::string> pairs;
    for (const ReportCard::Pair& pair : card.nearDuplicates)
        pairs.push_back(card.clips[pair.first].name + "+" + card.clips[pair.second].name);
    EXPECT_THAT(pairs, ::testing::Contains("bar 2 again.wav+bar 2.wav"));
    EXPECT_THAT(names(card, card.outliers), ElementsAre("hiss.wav"));
}

TEST_F(Reporting, NamesEveryFileWithSomethingAmiss) {
    const ReportCard card = report();
    std::map<std::string, Kind> kinds;
    for (const ReportCard::Blemish& blemish : card.blemishes)
        kinds[blemish.name] = blemish.kind;
    const std::map<std::string, Kind> expected{{"hiss.wav", Kind::cut},
                                               {"silent.wav", Kind::silent},
                                               {"words.wav", Kind::unreadable},
                                               {"torn.wav", Kind::damaged}};
    EXPECT_EQ(kinds, expected);
}

TEST_F(Reporting, ClipsCanBeHeldBack) {
    const ReportCard card = report({.holdsBack = true});
    ASSERT_TRUE(card.heldBack.has_value());
    EXPECT_EQ(card.heldBack->clips, 2U);
    EXPECT_GT(card.heldBack->heldBackDB, 0);
    EXPECT_GT(card.heldBack->learnedDB, 0);
    EXPECT_FALSE(report().heldBack.has_value());
}

TEST_F(Reporting, TheTrialBeginsWhereItIsTold) {
    const auto start = std::make_shared<const TrainingStart>(model);
    const ReportCard onto = report({.holdsBack = true, .start = start});
    const ReportCard fresh = report({.holdsBack = true});
    EXPECT_NE(onto.heldBack->heldBackDB, fresh.heldBack->heldBackDB);
    EXPECT_EQ(onto.heldBack->heldBackDB, report({.holdsBack = true, .start = start}).heldBack->heldBackDB);
}

TEST_F(Reporting, ExamplesAreTheWorstClipsAndTheirSounds) {
    const ReportCard card = report();
    const auto examples = reportExamples(card, model, corpus, testing::processor(), 2);
    ASSERT_EQ(examples.size(), 2U);
    EXPECT_EQ(examples[0].name, card.clips[card.worst[0]].name);
    EXPECT_FALSE(examples[0].original.empty());
    EXPECT_FALSE(examples[0].learned.empty());
    double sum = 0;
    for (std::size_t i = 0; i < examples[0].originalImage.size(); ++i)
        sum += std::pow(examples[0].originalImage[i] - examples[0].learnedImage[i], 2);
    EXPECT_NEAR(50 * std::sqrt(sum / static_cast<double>(examples[0].originalImage.size())),
                examples[0].errorDB, 1e-2);
}

TEST_F(Reporting, AFolderThatHasChangedIsNoBasis) {
    fs::remove(folder / "bar 1.wav");
    EXPECT_THROW((void)makeReport(model, Corpus::scan(folder.path()), testing::processor()), Failure);
}

TEST_F(Reporting, CanBeCancelled) {
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW((void)makeReport(model, corpus, testing::processor(), {}, {}, stop.get_token()),
                 CancellationError);
}

TEST_F(Reporting, ThePageIsWholeInItself) {
    ReportCard card = report();
    card.corpusName = "Bars & <more>";
    const auto examples = reportExamples(card, model, corpus, testing::processor(), 3);
    const std::string page = reportPage(card, examples, model.config);
    const XMLDocument document(page);
    EXPECT_THAT(document.texts("//*[local-name()='title']"), ElementsAre("Report on Bars & <more>"));
    EXPECT_EQ(document.count("//*[local-name()='audio']"), 6U);
    EXPECT_EQ(document.count("//*[local-name()='section']//*[local-name()='svg']"), 6U);
    for (const char* path : {"//@src", "//@href"}) {
        for (const std::string& address : document.texts(path))
            EXPECT_TRUE(address.starts_with("data:")) << address.substr(0, 60);
    }
    EXPECT_THAT(page, HasSubstr("torn.wav: damaged"));
    EXPECT_THAT(page, HasSubstr(card.verdict().english().substr(0, 20)));
}

// ---- The words

ReportCard cardOf(double error) {
    ReportCard card;
    card.errorDB = error;
    card.clips.resize(20);
    return card;
}

TEST(ReportWords, TheGradeFollowsTheError) {
    EXPECT_EQ(cardOf(3.9).grade(), ReportCard::Grade::good);
    EXPECT_EQ(cardOf(4).grade(), ReportCard::Grade::fair);
    EXPECT_EQ(cardOf(8).grade(), ReportCard::Grade::poor);
    EXPECT_THAT(cardOf(9).verdict(), HasSubstr("not learned"));
    EXPECT_THAT(cardOf(2.25).verdict(), HasSubstr("well"));
}

TEST(ReportWords, NothingIsAdvisedWhereAllIsWell) {
    EXPECT_THAT(cardOf(2).advice(), IsEmpty());
}

TEST(ReportWords, EveryFindingComesWithWhatToDo) {
    ReportCard card = cardOf(9);
    card.clips.resize(3);
    card.nearDuplicates = {{0, 1, 0.5}};
    card.outliers = {2};
    for (const Kind kind : {Kind::cut, Kind::silent, Kind::unreadable, Kind::damaged})
        card.blemishes.push_back({"x", kind, {}});
    card.heldBack = ReportCard::HeldBack{2, 3, 9};
    const std::vector<Message> advice = card.advice();
    EXPECT_EQ(advice.size(), 8U);
    EXPECT_THAT(advice.front(), HasSubstr("Learn it longer"));
    EXPECT_THAT(advice, ::testing::Contains(HasSubstr("2 files were left out")));
    EXPECT_THAT(advice, ::testing::Contains(HasSubstr("9.0 dB instead of 3.0 dB")));
    card.heldBack->heldBackDB = 5;
    EXPECT_EQ(card.advice().size(), 7U);
}

}  // namespace
}  // namespace quillmere
