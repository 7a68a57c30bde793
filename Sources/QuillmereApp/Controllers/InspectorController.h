#pragma once

#include <QImage>
#include <QList>
#include <QString>
#include <QUrl>
#include <QVariantList>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/Controllers/Candidate.h"
#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereApp/Controllers/Inspection.h"
#include "QuillmereCore/Origin/Recipe.h"

namespace quillmere {

// One sound, looked at closely: a candidate or a result. What it looks like, how loud it is, what it is a
// blend of, what of the corpus is nearest to it, and how new it is therefore.
class InspectorController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(bool isOpen READ isOpen WRITE setOpen NOTIFY isOpenChanged)
    // ---- The sound
    Q_PROPERTY(bool hasSubject READ hasSubject NOTIFY subjectChanged)
    Q_PROPERTY(QString title READ title NOTIFY subjectChanged)
    Q_PROPERTY(QUrl soundURL READ soundURL NOTIFY subjectChanged)  // what it is called while it plays
    Q_PROPERTY(bool isFile READ isFile NOTIFY subjectChanged)      // a result, or a candidate that was kept
    Q_PROPERTY(
        bool loops READ loops WRITE setLoops NOTIFY loopsChanged)  // the sound is played again and again
    Q_PROPERTY(bool hasRecipe READ hasRecipe NOTIFY subjectChanged)
    // ---- What is found out about it; absent until it is
    Q_PROPERTY(QList<qreal> peaks READ peaks NOTIFY factsChanged)
    Q_PROPERTY(QImage picture READ picture NOTIFY factsChanged)
    Q_PROPERTY(QString durationText READ durationText NOTIFY factsChanged)
    Q_PROPERTY(QString levelText READ levelText NOTIFY factsChanged)  // "−14.2 dB, peak −0.3 dB"
    Q_PROPERTY(double level READ level NOTIFY factsChanged)           // 0 (-60 dB or less) ... 1 (full scale)
    Q_PROPERTY(QString problem READ problem NOTIFY factsChanged)      // why it cannot be read
    // ---- Its relatives: {key, name, detail, url}, key being the digit that plays it, 0 for none
    // What it is made of is here to be heard; if not, it was made of another folder than the present one.
    Q_PROPERTY(bool isOfThisCorpus READ isOfThisCorpus NOTIFY relativesChanged)
    Q_PROPERTY(QVariantList sources READ sources NOTIFY relativesChanged)
    Q_PROPERTY(QVariantList nearest READ nearest NOTIFY relativesChanged)
    Q_PROPERTY(bool isComparing READ isComparing NOTIFY comparingChanged)
    Q_PROPERTY(int compared READ compared NOTIFY comparingChanged)  // files of the corpus, of toCompare
    Q_PROPERTY(int toCompare READ toCompare NOTIFY comparingChanged)
    // ---- How new it is
    Q_PROPERTY(double distance READ distance NOTIFY relativesChanged)  // dB to the nearest; below 0: unknown
    Q_PROPERTY(QString verdict READ verdict NOTIFY relativesChanged)
    Q_PROPERTY(bool isCopy READ isCopy NOTIFY relativesChanged)
    Q_PROPERTY(QList<qreal> limits READ limits CONSTANT)  // dB: copy, close and new end there
    Q_PROPERTY(double farthest READ farthest CONSTANT)    // dB, the end of the gauge

public:
    static constexpr int nearestShown = 5;
    static constexpr int sourcesShown = 4;

    // Who waits for the prints of the corpus.
    enum class Need {
        sound,    // the one that is looked at
        similar,  // what is like a sound from elsewhere
        novelty,  // how new sounds are
        unasked,  // the same, before anybody wants to know
    };

    explicit InspectorController(const Environment& environment);
    ~InspectorController() override;

    [[nodiscard]] bool isOpen() const { return isOpen_; }
    void setOpen(bool isOpen);
    // The corpus that its sounds are compared with; null for none.
    void setCorpus(std::shared_ptr<const CorpusSummary> corpus);

    // What is looked at, while it is open. The same one again changes nothing.
    void inspect(const CandidateHandle& candidate);
    void inspect(const GeneratedSample& sample, std::shared_ptr<const RecipeBase> base);
    void inspectNothing();
    // The prints of the corpus's files: null until they are made, which makePrints begins, on one thread as
    // long as nobody has asked for them. printsChanged: there are others, or none; printsFailed: they cannot
    // be made.
    [[nodiscard]] std::shared_ptr<const Inspection::CorpusPrints> prints() const { return prints_; }
    void makePrints(Need need);
    // One who does not wait any more: the work ends when nobody does.
    void withdraw(Need need);
    // What is known of it besides has changed: a candidate has become a file.
    void refresh();
    // A file has got another name.
    void rename(const QUrl& from, const QUrl& to);

    // A sound has come to its end: whether it is played once more, which this begins.
    [[nodiscard]] bool playsAgain(const QUrl& url);

    // ---- What can be heard, at one level

    // Plays or stops the sound itself.
    Q_INVOKABLE void togglePlay();
    // key: of one of its relatives. Plays that, or, when that was what played last, the sound itself.
    Q_INVOKABLE void playInTurn(int key);

    // ---- What can be made of it

    Q_INVOKABLE void moreLikeThis() { wish(CandidatesRelation::Way::like); }
    Q_INVOKABLE void newSkins() { wish(CandidatesRelation::Way::body); }
    Q_INVOKABLE void newBodies() { wish(CandidatesRelation::Way::skin); }
    Q_INVOKABLE void copyRecipe();

    [[nodiscard]] bool loops() const { return loops_; }
    void setLoops(bool loops);
    [[nodiscard]] bool hasSubject() const { return subject_.has_value(); }
    [[nodiscard]] QString title() const;
    [[nodiscard]] QUrl soundURL() const;
    // Of a result, or of a candidate that was kept; empty otherwise.
    [[nodiscard]] QUrl file() const;
    [[nodiscard]] bool isFile() const { return !file().isEmpty(); }
    [[nodiscard]] bool hasRecipe() const { return subject_ && subject_->base; }
    [[nodiscard]] QList<qreal> peaks() const { return facts_ ? facts_->peaks : QList<qreal>(); }
    [[nodiscard]] QImage picture() const { return facts_ ? facts_->picture : QImage(); }
    [[nodiscard]] QString durationText() const;
    [[nodiscard]] QString levelText() const;
    [[nodiscard]] double level() const;
    [[nodiscard]] QString problem() const { return problem_; }
    [[nodiscard]] bool isOfThisCorpus() const;
    [[nodiscard]] QVariantList sources() const;
    [[nodiscard]] QVariantList nearest() const;
    [[nodiscard]] bool isComparing() const { return comparing_ != nullptr; }
    [[nodiscard]] int compared() const { return compared_; }
    [[nodiscard]] int toCompare() const;
    [[nodiscard]] double distance() const;
    [[nodiscard]] QString verdict() const;
    [[nodiscard]] bool isCopy() const { return isLikeNearest() || isLikeSource(); }
    [[nodiscard]] QList<qreal> limits() const { return {copyBelowDB, closeBelowDB, farFromDB}; }
    [[nodiscard]] double farthest() const { return 20; }

signals:
    void isOpenChanged();
    void loopsChanged();
    void subjectChanged();
    void factsChanged();
    void relativesChanged();
    void comparingChanged();
    void printsChanged();
    void printsFailed(const QString& reason);
    void playRequested(const QUrl& name, const quillmere::PlayableSound& sound);
    void togglePlayRequested(const QUrl& name, const quillmere::PlayableSound& sound);
    void candidatesWanted(const quillmere::CandidatesRelation& relation);

private:
    friend struct AppModelProbe;  // for tests

    struct Subject {
        CandidateHandle candidate;   // null for a result
        std::filesystem::path file;  // of a result
        SampleOrigin origin;
        std::shared_ptr<const RecipeBase> base;  // null where nobody knows how it was made
    };
    struct Relative {
        std::string name;
        QString detail;
    };

    void begin(std::optional<Subject> subject);
    void lookCloser();
    void taken(const std::shared_ptr<CancelFlag>& stale, Inspection::Facts facts);
    void compare();
    void measureCorpus();
    [[nodiscard]] Inspection::CorpusPrints::Pace neededPace() const;
    void startMeasuring();
    void endComparing();
    void stopComparing();
    void findNearest();
    [[nodiscard]] std::optional<Recipe> recipe() const;
    void wish(CandidatesRelation::Way way);
    [[nodiscard]] std::vector<Relative> playableRelatives() const;  // by their keys, from 1
    [[nodiscard]] static QUrl urlOf(const std::string& clip);
    [[nodiscard]] QVariantList list(const std::vector<Relative>& relatives, int firstKey) const;
    [[nodiscard]] std::vector<Relative> sourceRelatives() const;
    [[nodiscard]] std::vector<Relative> nearestRelatives() const;
    [[nodiscard]] bool isLikeNearest() const;  // as good as a copy of it
    [[nodiscard]] bool isLikeSource() const;
    void playSubject(float gain);

    bool isOpen_ = false;
    bool loops_ = false;
    std::shared_ptr<const CorpusSummary> corpus_;
    std::string fingerprint_;  // of corpus_
    std::optional<Subject> subject_;
    std::shared_ptr<CancelFlag> stale_ =
        std::make_shared<CancelFlag>();  // set when the subject is another one
    std::optional<Inspection::Facts> facts_;
    QString problem_;
    std::shared_ptr<const Inspection::CorpusPrints> prints_;  // of the corpus, when they are made
    std::shared_ptr<Inspection::MeasuredFiles> measured_ =
        std::make_shared<Inspection::MeasuredFiles>();  // of the corpus, by attempts that were stopped
    std::shared_ptr<CancelFlag> comparing_;             // they are being made
    std::set<Need> needs_;                              // of those who wait for the prints
    Inspection::CorpusPrints::Pace pace_{};             // of those that are being made
    int compared_ = 0;
    std::vector<Inspection::CorpusPrints::Neighbour> nearest_;
    bool isCompared_ = false;  // nearest_ is what there is
    float gain_ = 1;           // of the sound itself when it was played last
    int inTurn_ = 0;           // key of the relative that was played last, unless the sound was since
    quint64 turn_ = 0;         // grows with everything that is to be heard: only the newest is
    BackgroundTasks tasks_;    // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
