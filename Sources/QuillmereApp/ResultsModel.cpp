#include "QuillmereApp/ResultsModel.h"

#include <QRegularExpression>
#include <QStringList>
#include <algorithm>
#include <chrono>
#include <limits>
#include <map>
#include <set>
#include <system_error>
#include <type_traits>
#include <utility>

#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/TimeText.h"
#include "QuillmereApp/Waveform.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

using namespace std::chrono_literals;

bool isFile(const std::filesystem::path& path) {
    std::error_code unknown;  // then it cannot be played either
    return std::filesystem::is_regular_file(path, unknown);
}

// Folders that have answered, or not, to one piece of work.
class Answers {
public:
    explicit Answers(const FolderLooks& looks) : looks_(looks) {}

    [[nodiscard]] bool of(const std::filesystem::path& folder) {
        const auto [known, isNew] = known_.try_emplace(folder, false);
        if (isNew) known->second = looks_.at(folder).kind != Place::Kind::noAnswer;
        return known->second;
    }

private:
    const FolderLooks& looks_;
    std::map<std::filesystem::path, bool> known_;
};

std::vector<bool> existing(const std::vector<std::filesystem::path>& files, const FolderLooks& looks,
                           const CancelFlag& stale) {
    Answers answers(looks);
    std::vector<bool> exist;
    exist.reserve(files.size());
    for (const auto& file : files) {
        if (stale.isCancelled()) break;
        exist.push_back(answers.of(file.parent_path()) && isFile(file));
    }
    return exist;
}

QList<qreal> peaksOf(const std::filesystem::path& file, const FolderLooks& looks) {
    if (!Answers(looks).of(file.parent_path()))
        throw Failure(Folders::noAnswer(toQString(file)).toStdString());
    return Waveform::peaks(file, ResultsModel::peakCount);
}

bool isAmong(const std::vector<GeneratedSample>& samples, const std::filesystem::path& file) {
    return std::ranges::find(samples, file, &GeneratedSample::url) != samples.end();
}

// A row that had the new name has none any more: its file is gone.
void renameIn(std::vector<GeneratedSample>& samples, const std::filesystem::path& from,
              const std::filesystem::path& to) {
    std::erase_if(samples, [&](const GeneratedSample& sample) { return sample.url == to; });
    const auto renamed = std::ranges::find(samples, from, &GeneratedSample::url);
    if (renamed != samples.end()) renamed->url = to;
}

QStringList answering(const std::set<std::filesystem::path>& folders, const FolderLooks& looks) {
    Answers answers(looks);
    QStringList found;
    for (const auto& folder : folders) {
        if (answers.of(folder)) found.append(toQString(folder));
    }
    return found;
}

// "7" of "Drums_var_0007.wav"; of any other name all but its ending.
QString labelOf(const QString& fileName) {
    static const QRegularExpression numbered(QStringLiteral("_var_0*(\\d+)\\.wav$"));
    const QRegularExpressionMatch match = numbered.match(fileName);
    if (match.hasMatch()) return match.captured(1);
    return fileName.endsWith(QLatin1String(".wav"), Qt::CaseInsensitive) ? fileName.chopped(4) : fileName;
}

// Unknown values, which are below 0, last.
double knownFirst(double value) {
    return value < 0 ? std::numeric_limits<double>::infinity() : value;
}

// Puts indices into the order of the keys of what they stand for; equal ones keep theirs.
template <typename Key>
void sortBy(std::vector<std::size_t>& indices, const Key& key) {
    std::vector<std::pair<std::invoke_result_t<Key, std::size_t>, std::size_t>> keyed;
    keyed.reserve(indices.size());
    for (const std::size_t index : indices)
        keyed.emplace_back(key(index), index);
    std::ranges::sort(keyed);
    std::ranges::transform(keyed, indices.begin(), [](const auto& entry) { return entry.second; });
}

}  // namespace

ResultsModel::ResultsModel(std::shared_ptr<const FolderLooks> looks, QObject* parent)
    : QAbstractListModel(parent),
      looks_(std::move(looks)),
      staleFiles_(std::make_shared<CancelFlag>()),
      tasks_(2) {
    // A program that deletes a thousand files tells of each.
    refreshSoon_.setSingleShot(true);
    refreshSoon_.setInterval(200ms);
    connect(&refreshSoon_, &QTimer::timeout, this, &ResultsModel::refresh);
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, &refreshSoon_, qOverload<>(&QTimer::start));
}

ResultsModel::~ResultsModel() {
    staleFiles_->cancel();
}

void ResultsModel::setSamples(std::vector<GeneratedSample> samples) {
    if (holds_ > 0) {
        next_ = std::move(samples);
    } else {
        replaceAll(std::move(samples));
    }
}

void ResultsModel::replaceAll(std::vector<GeneratedSample> samples) {
    if (samples.empty() && all_.empty()) return;
    staleFiles_->cancel();
    staleFiles_ = std::make_shared<CancelFlag>();
    isOutdated_ = false;
    const bool hidSome = std::exchange(onlyFavourites_, false);  // chosen for the files before
    resetRows([&] {
        all_ = std::move(samples);
        rows_.clear();
        rowByFile_.assign(all_.size(), -1);
        rows_ = takeRows(wanted());
    });
    if (hidSome) emit onlyFavouritesChanged();
    emit replaced();
}

void ResultsModel::add(GeneratedSample sample) {
    if (holds_ == 0 && !isAmong(all_, sample.url)) {
        addFile(std::move(sample));
        return;
    }
    std::vector<GeneratedSample> files = next_ ? *next_ : all_;
    std::erase_if(files, [&](const GeneratedSample& file) { return file.url == sample.url; });
    files.push_back(std::move(sample));
    setSamples(std::move(files));
}

void ResultsModel::release() {
    if (--holds_ > 0) return;
    if (next_) {
        replaceAll(*std::exchange(next_, std::nullopt));
    } else if (isOutdated_) {
        showWanted();
    }
}

// ---- The selection

void ResultsModel::setSelection(QSet<QUrl> selected) {
    if (selected == selected_) return;
    selected_ = std::move(selected);
    if (count() > 0) emit dataChanged(index(0), index(count() - 1), {IsSelectedRole});
    emit selectionChanged();
}

void ResultsModel::toggleSelected(int row) {
    if (row < 0 || row >= count()) return;
    QSet<QUrl> selected = selected_;
    if (!selected.remove(urlAt(row))) selected.insert(urlAt(row));
    setSelection(std::move(selected));
}

void ResultsModel::selectRange(int from, int to) {
    QSet<QUrl> selected;
    for (int row = std::max(0, std::min(from, to)); row <= std::min(count() - 1, std::max(from, to)); ++row)
        selected.insert(urlAt(row));
    setSelection(std::move(selected));
}

void ResultsModel::clearSelection() {
    setSelection({});
}

QList<QUrl> ResultsModel::chosenFiles(int row) const {
    QList<QUrl> files;
    if (selected_.isEmpty()) {
        if (existsAt(row)) files.append(urlAt(row));
        return files;
    }
    for (const Row& one : rows_) {
        if (one.exists && selected_.contains(one.url)) files.append(one.url);
    }
    return files;
}

// ---- Which rows, and in which order

void ResultsModel::setOrder(Order order) {
    if (order == order_) return;
    order_ = order;
    emit orderChanged();
    showWanted();
}

void ResultsModel::setOnlyFavourites(bool only) {
    if (only == onlyFavourites_) return;
    onlyFavourites_ = only;
    emit onlyFavouritesChanged();
    showWanted();
}

std::vector<std::size_t> ResultsModel::wanted() const {
    const auto fileOf = [this](std::size_t index) { return toUrl(all_[index].url); };
    std::vector<std::size_t> indices;
    indices.reserve(all_.size());
    for (std::size_t i = 0; i < all_.size(); ++i) {
        if (!onlyFavourites_ || isFavourite_(fileOf(i))) indices.push_back(i);
    }
    switch (order_) {
        case AsMade:
            break;
        case ByName:
            sortBy(indices, [this](std::size_t i) { return all_[i].url.filename().native(); });
            break;
        case ByLength:
            sortBy(indices, [this](std::size_t i) { return all_[i].seconds; });
            break;
        case ByBrightness:
            sortBy(indices, [&](std::size_t i) { return knownFirst(measureOf_(fileOf(i)).brightness); });
            break;
        case ByNovelty:
            sortBy(indices, [&](std::size_t i) { return knownFirst(measureOf_(fileOf(i)).novelty); });
            break;
    }
    return indices;
}

const GeneratedSample& ResultsModel::sampleAt(int row) const {
    return all_[rows_.at(static_cast<std::size_t>(row)).file];
}

void ResultsModel::showWanted() {
    isOutdated_ = holds_ > 0;
    if (isOutdated_) return;
    const std::vector<std::size_t> files = wanted();
    if (std::ranges::equal(files, rows_, {}, {}, &Row::file)) return;
    if (areShown(files)) {
        files.size() <= mostMoved ? permute(files) : reorder(files);
    } else {
        resetRows([&] { rows_ = takeRows(files); });
    }
}

bool ResultsModel::areShown(const std::vector<std::size_t>& files) const {
    return files.size() == rows_.size() &&
           std::ranges::all_of(files, [this](std::size_t file) { return rowByFile_[file] >= 0; });
}

ResultsModel::Row ResultsModel::rowFor(std::size_t file) const {
    const std::filesystem::path& path = all_[file].url;
    return {.file = file, .url = toUrl(path), .fileName = toQString(path.filename()), .peaks = {}};
}

// What is known of the files stays known.
std::vector<ResultsModel::Row> ResultsModel::takeRows(const std::vector<std::size_t>& files) {
    std::vector<Row> rows;
    rows.reserve(files.size());
    for (const std::size_t file : files) {
        const int row = rowByFile_[file];
        rows.push_back(row < 0 ? rowFor(file) : std::move(rows_[static_cast<std::size_t>(row)]));
    }
    return rows;
}

void ResultsModel::indexRows() {
    rowByFile_.assign(all_.size(), -1);
    rowByUrl_.clear();
    rowByUrl_.reserve(count());
    for (int row = 0; row < count(); ++row) {
        const Row& one = rows_[static_cast<std::size_t>(row)];
        rowByFile_[one.file] = row;
        rowByUrl_.insert(one.url, row);
    }
}

// The same rows in another order: a view stays where it is.
void ResultsModel::permute(const std::vector<std::size_t>& files) {
    emit layoutAboutToBeChanged({}, VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    std::vector<std::size_t> kept;
    for (const QModelIndex& one : before)
        kept.push_back(rows_[static_cast<std::size_t>(one.row())].file);
    rows_ = takeRows(files);
    indexRows();
    QModelIndexList now;
    for (const std::size_t file : kept)
        now.append(index(rowByFile_[file]));
    changePersistentIndexList(before, now);
    emit layoutChanged({}, VerticalSortHint);
}

// The same, shown anew.
void ResultsModel::reorder(const std::vector<std::size_t>& files) {
    beginResetModel();
    rows_ = takeRows(files);
    indexRows();
    endResetModel();
}

void ResultsModel::resetRows(const std::function<void()>& change) {
    const bool playedOne = rowOf(playing_) >= 0;
    beginResetModel();
    change();
    indexRows();
    endResetModel();
    emit countChanged();
    QSet<QUrl> selected = selected_;
    selected.removeIf([this](const QUrl& file) { return rowOf(file) < 0; });
    setSelection(std::move(selected));
    watchFolders();
    if (playedOne && rowOf(playing_) < 0) emit playingGone();
}

void ResultsModel::addFile(GeneratedSample sample) {
    all_.push_back(std::move(sample));
    rowByFile_.push_back(-1);
    if (onlyFavourites_ && !isFavourite_(toUrl(all_.back().url))) {
        emit countChanged();  // of all files
        return;
    }
    addRow(all_.size() - 1);
    showWanted();  // in its place
}

void ResultsModel::addRow(std::size_t file) {
    beginInsertRows({}, count(), count());
    rows_.push_back(rowFor(file));
    rowByFile_[file] = count() - 1;
    rowByUrl_.insert(rows_.back().url, count() - 1);
    endInsertRows();
    emit countChanged();
    if (!watched_.contains(all_[file].url.parent_path())) watchFolders();
}

void ResultsModel::rename(const QUrl& from, const QUrl& to) {
    if (next_) renameIn(*next_, toPath(from), toPath(to));
    if (!isAmong(all_, toPath(from))) return;
    if (playing_ == from) playing_ = to;
    if (!isAmong(all_, toPath(to))) {
        renameFile(from, to);
        return;
    }
    std::vector<GeneratedSample> files = next_ ? *next_ : all_;
    renameIn(files, toPath(from), toPath(to));
    setSamples(std::move(files));
}

void ResultsModel::renameFile(const QUrl& from, const QUrl& to) {
    renameIn(all_, toPath(from), toPath(to));
    const int row = rowOf(from);
    if (row < 0) return;
    Row& renamed = rows_[static_cast<std::size_t>(row)];
    renamed.url = to;
    renamed.fileName = to.fileName();
    renamed.exists = true;
    rowByUrl_.remove(from);
    rowByUrl_.insert(to, row);
    if (selected_.remove(from)) selected_.insert(to);
    emit dataChanged(index(row), index(row));
    if (order_ == ByName) showWanted();
}

void ResultsModel::setFavourites(std::function<bool(const QUrl& file)> isFavourite) {
    isFavourite_ = std::move(isFavourite);
}

void ResultsModel::favouritesChanged() {
    if (onlyFavourites_) showWanted();
    if (count() > 0) emit dataChanged(index(0), index(count() - 1), {IsFavouriteRole});
}

void ResultsModel::setMeasures(std::function<SoundMeasure(const QUrl& file)> measureOf) {
    measureOf_ = std::move(measureOf);
}

void ResultsModel::measuresSettled() {
    if (order_ == ByBrightness || order_ == ByNovelty) showWanted();
}

void ResultsModel::measuresChanged() {
    if (count() > 0) emit dataChanged(index(0), index(count() - 1), {NoveltyRole, NoveltyTextRole});
}

void ResultsModel::watchFolders() {
    if (!watcher_.directories().isEmpty()) watcher_.removePaths(watcher_.directories());
    watched_.clear();
    for (const Row& row : rows_)
        watched_.insert(all_[row.file].url.parent_path());
    if (watched_.empty()) return;
    tasks_.run([folders = watched_, looks = looks_] { return answering(folders, *looks); },
               [this, stale = staleFiles_](const QStringList& found) {
                   if (stale->isCancelled()) return;
                   for (const QString& folder : found)
                       watcher_.addPath(folder);
                   refresh();  // what has changed before
               },
               [](const TaskFailure&) {});
}

void ResultsModel::setPlaying(const QUrl& url) {
    if (url == playing_) return;
    const int before = rowOf(std::exchange(playing_, url));
    if (before >= 0) announce(before, IsPlayingRole);
    const int now = rowOf(url);
    if (now >= 0) announce(now, IsPlayingRole);
}

QUrl ResultsModel::urlAt(int row) const {
    return row >= 0 && row < count() ? rows_[static_cast<std::size_t>(row)].url : QUrl();
}

int ResultsModel::rowOf(const QUrl& url) const {
    return rowByUrl_.value(url, -1);
}

bool ResultsModel::existsAt(int row) const {
    return row >= 0 && row < count() && rows_[static_cast<std::size_t>(row)].exists;
}

QList<QUrl> ResultsModel::existingFiles() const {
    QList<QUrl> files;
    for (const Row& row : rows_) {
        if (row.exists) files.append(row.url);
    }
    return files;
}

void ResultsModel::look(int row, std::function<void(bool exists)> answer) {
    const std::size_t file = rows_.at(static_cast<std::size_t>(row)).file;
    tasks_.run([path = all_[file].url, looks = looks_,
                stale = staleFiles_] { return existing({path}, *looks, *stale); },
               [this, file, answer = std::move(answer), stale = staleFiles_](const std::vector<bool>& exist) {
                   if (stale->isCancelled()) return;
                   setExists(file, exist.front());
                   answer(exist.front());
               },
               [](const TaskFailure&) {}, nextPriority_++);
}

// Its row may have another place by now, or none.
void ResultsModel::setExists(std::size_t file, bool exists) {
    const int row = rowByFile_[file];
    if (row >= 0 && std::exchange(rows_[static_cast<std::size_t>(row)].exists, exists) != exists)
        announce(row, ExistsRole);
}

void ResultsModel::refresh() {
    if (rows_.empty()) return;
    std::vector<std::size_t> files;
    std::vector<std::filesystem::path> paths;
    for (const Row& row : rows_) {
        files.push_back(row.file);
        paths.push_back(all_[row.file].url);
    }
    tasks_.run([paths = std::move(paths), looks = looks_,
                stale = staleFiles_] { return existing(paths, *looks, *stale); },
               [this, files = std::move(files), stale = staleFiles_](const std::vector<bool>& exist) {
                   if (stale->isCancelled()) return;
                   for (std::size_t i = 0; i < exist.size(); ++i)
                       setExists(files[i], exist[i]);
               },
               [](const TaskFailure&) {}, nextPriority_++);
}

void ResultsModel::requestPeaks(int row) {
    Row& wanted = rows_[static_cast<std::size_t>(row)];
    wanted.peaksRequested = true;
    tasks_.run(
        [path = all_[wanted.file].url, looks = looks_, stale = staleFiles_] {
            return stale->isCancelled() ? QList<qreal>() : peaksOf(path, *looks);
        },
        [this, file = wanted.file, stale = staleFiles_](QList<qreal> peaks) {
            if (stale->isCancelled() || rowByFile_[file] < 0) return;
            rows_[static_cast<std::size_t>(rowByFile_[file])].peaks = std::move(peaks);
            announce(rowByFile_[file], PeaksRole);
        },
        [this, stale = staleFiles_](const TaskFailure&) {
            // No thumbnail: most likely the file is gone, which the row then shows.
            if (!stale->isCancelled()) refreshSoon_.start();
        },
        nextPriority_++);
}

void ResultsModel::announce(int row, int role) {
    emit dataChanged(index(row), index(row), {role});
}

int ResultsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant ResultsModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const Row& row = rows_[static_cast<std::size_t>(index.row())];
    switch (role) {
        case UrlRole:
            return row.url;
        case FileNameRole:
            return row.fileName;
        case SecondsRole:
            return all_[row.file].seconds;
        case DurationTextRole:
            return TimeText::duration(all_[row.file].seconds);
        case ExistsRole:
            return row.exists;
        case IsPlayingRole:
            return row.url == playing_;
        case IsFavouriteRole:
            return isFavourite_(row.url);
        case LabelRole:
            return labelOf(row.fileName);
        case IsSelectedRole:
            return selected_.contains(row.url);
        case NoveltyRole:
            return measureOf_(row.url).noveltyText();
        case NoveltyTextRole:
            return measureOf_(row.url).noveltyWord();
        case PeaksRole:
            // Only views read peaks, and only of the rows they show.
            if (!row.peaksRequested) const_cast<ResultsModel*>(this)->requestPeaks(index.row());
            return QVariant::fromValue(row.peaks);
        default:
            return {};
    }
}

QHash<int, QByteArray> ResultsModel::roleNames() const {
    return {{UrlRole, "url"},
            {FileNameRole, "fileName"},
            {SecondsRole, "seconds"},
            {DurationTextRole, "durationText"},
            {ExistsRole, "exists"},
            {IsPlayingRole, "isPlaying"},
            {PeaksRole, "peaks"},
            {IsFavouriteRole, "isFavourite"},
            {LabelRole, "label"},
            {NoveltyRole, "novelty"},
            {NoveltyTextRole, "noveltyText"},
            {IsSelectedRole, "isSelected"}};
}

}  // namespace quillmere
