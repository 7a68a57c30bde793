#include "QuillmereApp/ParameterModel.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "QuillmereApp/Words.h"

namespace quillmere {
namespace {

QString text(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

int groupIndex(ParameterSpec::Group group) {
    return static_cast<int>(std::find(allParameterGroups.begin(), allParameterGroups.end(), group) -
                            allParameterGroups.begin());
}

const ParameterSpec& specAt(int row) {
    return Aesthetics::specs()[static_cast<std::size_t>(row)];
}

double defaultValue(const ParameterSpec& spec) {
    return spec.value(Aesthetics());
}

// Whether text, without its blanks, is the unit or a way of typing it: "x" for the multiplication sign,
// a shorter "dB" for "dB/oct" and "dBFS".
bool isUnit(const ParameterSpec& spec, const QString& typed) {
    const QString unit = text(spec.unit);
    if (typed.isEmpty() || typed.compare(unit, Qt::CaseInsensitive) == 0) return true;
    if (unit == QStringLiteral("×")) return typed.compare(QStringLiteral("x"), Qt::CaseInsensitive) == 0;
    return unit.startsWith(QStringLiteral("dB")) &&
           typed.compare(QStringLiteral("dB"), Qt::CaseInsensitive) == 0;
}

}  // namespace

double ParameterScale::position(const ParameterSpec& spec, double value) {
    if (std::isnan(value)) return 0;
    const double inside = std::clamp(value, spec.lower, spec.upper);
    if (spec.logarithmic) return std::log(inside / spec.lower) / std::log(spec.upper / spec.lower);
    return (inside - spec.lower) / (spec.upper - spec.lower);
}

double ParameterScale::value(const ParameterSpec& spec, double position) {
    const double inside = std::clamp(position, 0.0, 1.0);
    if (spec.logarithmic) return spec.lower * std::pow(spec.upper / spec.lower, inside);
    return spec.lower + inside * (spec.upper - spec.lower);
}

std::optional<double> ParameterScale::parse(const ParameterSpec& spec, const QString& typed) {
    QString number = typed.trimmed();
    number.replace(QChar(0x2212), QLatin1Char('-'));  // the typographic minus sign
    number.replace(QLatin1Char(','), QLatin1Char('.'));
    // The unit is what follows the last digit or decimal point.
    qsizetype end = number.size();
    while (end > 0 && !number.at(end - 1).isDigit() && number.at(end - 1) != QLatin1Char('.'))
        --end;
    if (!isUnit(spec, number.mid(end).trimmed())) return std::nullopt;
    return ParameterSpec::parse(number.left(end).toStdString());
}

ParameterModel::ParameterModel(std::function<void(const Aesthetics&)> edited, QObject* parent)
    : QAbstractListModel(parent), edited_(std::move(edited)) {}

void ParameterModel::setValues(const Aesthetics& values) {
    const Aesthetics before = std::exchange(values_, values);
    bool changed = false;
    for (int row = 0; row < rowCount(); ++row) {
        const ParameterSpec& spec = specAt(row);
        if (spec.value(before) == spec.value(values_)) continue;
        changed = true;
        emit dataChanged(index(row), index(row), {ValueRole, PositionRole, TextRole, IsDefaultRole});
    }
    if (changed) emit valuesChanged();
}

QStringList ParameterModel::groupTitles() const {
    QStringList titles;
    for (const ParameterSpec::Group group : allParameterGroups)
        titles.append(Words::inTable(rawValue(group)));
    return titles;
}

QList<int> ParameterModel::rowsOfGroup(int group) const {
    QList<int> rows;
    for (int row = 0; row < rowCount(); ++row) {
        if (groupIndex(specAt(row).group) == group) rows.append(row);
    }
    return rows;
}

QVariant ParameterModel::get(const QString& parameterId, const QString& role) const {
    const ParameterSpec* spec = find(parameterId);
    if (spec == nullptr) return {};
    const int row = static_cast<int>(spec - Aesthetics::specs().data());
    return data(index(row), roleNames().key(role.toUtf8(), -1));
}

void ParameterModel::setValue(const QString& parameterId, double value) {
    if (const ParameterSpec* spec = find(parameterId)) edit(*spec, value);
}

void ParameterModel::setPosition(const QString& parameterId, double position) {
    const ParameterSpec* spec = find(parameterId);
    if (spec == nullptr || std::isnan(position)) return;
    edit(*spec, spec->snapped(ParameterScale::value(*spec, position)));
}

void ParameterModel::nudge(const QString& parameterId, int steps) {
    const ParameterSpec* spec = find(parameterId);
    if (spec == nullptr) return;
    edit(*spec, spec->snapped(spec->value(values_) + steps * spec->step));
}

bool ParameterModel::setText(const QString& parameterId, const QString& typed) {
    const ParameterSpec* spec = find(parameterId);
    if (spec == nullptr) return false;
    const std::optional<double> value = ParameterScale::parse(*spec, typed);
    if (!value) return false;
    // The text that is shown for the present value means that value, not its rounded form.
    if (typed.trimmed() == QString::fromStdString(spec->format(spec->value(values_)))) return true;
    edit(*spec, spec->step == 1 ? spec->snapped(*value) : *value);
    return true;
}

void ParameterModel::reset(const QString& parameterId) {
    if (const ParameterSpec* spec = find(parameterId)) edit(*spec, defaultValue(*spec));
}

void ParameterModel::setLocked(const QString& parameterId, bool locked) {
    const ParameterSpec* spec = find(parameterId);
    if (spec == nullptr || isLocked(parameterId) == locked) return;
    if (locked) {
        locked_.insert(parameterId);
    } else {
        locked_.erase(parameterId);
    }
    const int row = static_cast<int>(spec - Aesthetics::specs().data());
    emit dataChanged(index(row), index(row), {LockedRole});
}

bool ParameterModel::isLocked(const QString& parameterId) const {
    return locked_.contains(parameterId);
}

int ParameterModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(Aesthetics::specs().size());
}

QVariant ParameterModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const ParameterSpec& spec = specAt(index.row());
    const double value = spec.value(values_);
    switch (role) {
        case IdRole:
            return text(spec.id);
        case TitleRole:
            return Words::inTable(spec.title);
        case HelpRole:
            return Words::inTable(spec.help);
        case UnitRole:
            return text(spec.unit);
        case GroupRole:
            return text(rawValue(spec.group));
        case GroupIndexRole:
            return groupIndex(spec.group);
        case LowerRole:
            return spec.lower;
        case UpperRole:
            return spec.upper;
        case StepRole:
            return spec.step;
        case LogarithmicRole:
            return spec.logarithmic;
        case ValueRole:
            return value;
        case DefaultValueRole:
            return defaultValue(spec);
        case PositionRole:
            return ParameterScale::position(spec, value);
        case DefaultPositionRole:
            return ParameterScale::position(spec, defaultValue(spec));
        case TextRole:
            return QString::fromStdString(spec.format(value));
        case IsDefaultRole:
            return value == defaultValue(spec);
        case LockedRole:
            return isLocked(text(spec.id));
        default:
            return {};
    }
}

QHash<int, QByteArray> ParameterModel::roleNames() const {
    return {{IdRole, "parameterId"},    {TitleRole, "title"},
            {HelpRole, "help"},         {UnitRole, "unit"},
            {GroupRole, "group"},       {GroupIndexRole, "groupIndex"},
            {LowerRole, "lower"},       {UpperRole, "upper"},
            {StepRole, "step"},         {LogarithmicRole, "logarithmic"},
            {ValueRole, "value"},       {DefaultValueRole, "defaultValue"},
            {PositionRole, "position"}, {DefaultPositionRole, "defaultPosition"},
            {TextRole, "text"},         {IsDefaultRole, "isDefault"},
            {LockedRole, "locked"}};
}

const ParameterSpec* ParameterModel::find(const QString& parameterId) const {
    return Aesthetics::spec(parameterId.toStdString());
}

void ParameterModel::edit(const ParameterSpec& spec, double value) {
    if (std::isnan(value)) return;
    Aesthetics next = values_;
    next.set(spec, value);
    if (next != values_) edited_(next);
}

}  // namespace quillmere
