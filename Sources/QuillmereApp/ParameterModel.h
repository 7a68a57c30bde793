#pragma once

#include <QAbstractListModel>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <functional>
#include <set>

#include "QuillmereCore/Generate/Aesthetics.h"

namespace quillmere {

// The twenty generation parameters, one row each, in the order of Aesthetics::specs().
//
// Roles (all of them usable as required properties of a delegate):
//   parameterId   string, "pitch-jitter"; names the row in every call below
//   title, help, unit        strings
//   group         string, the title of its group; groupIndex: 0 ... 3 in groupTitles
//   lower, upper, step       doubles
//   logarithmic   bool
//   value, defaultValue      doubles
//   position, defaultPosition  0 ... 1 along the slider, logarithmic where the parameter is
//   text          string with unit, "250 ms"
//   isDefault     bool
//   locked        bool: randomise leaves it alone
// Rows never come or go; dataChanged tells of values and locks.
//
// Edits through here are undo steps of CharacterController: one per call, or one for all calls between its
// beginEdit and endEdit.
class ParameterModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("CharacterController owns it")
    Q_PROPERTY(QStringList groupTitles READ groupTitles CONSTANT)
    Q_PROPERTY(bool allDefault READ allDefault NOTIFY valuesChanged)

public:
    enum Role {
        IdRole = Qt::UserRole + 1,
        TitleRole,
        HelpRole,
        UnitRole,
        GroupRole,
        GroupIndexRole,
        LowerRole,
        UpperRole,
        StepRole,
        LogarithmicRole,
        ValueRole,
        DefaultValueRole,
        PositionRole,
        DefaultPositionRole,
        TextRole,
        IsDefaultRole,
        LockedRole,
    };

    // edited is called with the new values for each edit that changes something; the owner answers with
    // setValues.
    explicit ParameterModel(std::function<void(const Aesthetics&)> edited, QObject* parent = nullptr);

    [[nodiscard]] const Aesthetics& values() const { return values_; }
    void setValues(const Aesthetics& values);

    [[nodiscard]] QStringList groupTitles() const;
    [[nodiscard]] bool allDefault() const { return values_ == Aesthetics(); }

    // Rows of one group, for a repeater of its own: 0 ... 3.
    Q_INVOKABLE [[nodiscard]] QList<int> rowsOfGroup(int group) const;
    // The value of one role of one parameter, by the role's name; for controls outside a view. Not a binding:
    // read it again after valuesChanged.
    Q_INVOKABLE [[nodiscard]] QVariant get(const QString& parameterId, const QString& role) const;

    // Each clamps into the parameter's range. Unknown identifiers and NaN change nothing.
    Q_INVOKABLE void setValue(const QString& parameterId, double value);
    // As setValue, from a place on the slider, 0 ... 1, snapped to the parameter's step.
    Q_INVOKABLE void setPosition(const QString& parameterId, double position);
    // One or more steps up or down: arrow keys (1), page keys (10).
    Q_INVOKABLE void nudge(const QString& parameterId, int steps);
    // A number with or without the unit ("250", "250 ms", "-3.5dB/oct", "0,5"). False, with nothing changed,
    // when it is none.
    Q_INVOKABLE bool setText(const QString& parameterId, const QString& text);
    Q_INVOKABLE void reset(const QString& parameterId);

    Q_INVOKABLE void setLocked(const QString& parameterId, bool locked);
    [[nodiscard]] bool isLocked(const QString& parameterId) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

signals:
    void valuesChanged();

private:
    [[nodiscard]] const ParameterSpec* find(const QString& parameterId) const;
    void edit(const ParameterSpec& spec, double value);

    std::function<void(const Aesthetics&)> edited_;
    Aesthetics values_;
    std::set<QString> locked_;
};

// Places on a slider and values of a parameter.
namespace ParameterScale {
// 0 ... 1; values outside the range are clamped, NaN is 0.
[[nodiscard]] double position(const ParameterSpec& spec, double value);
[[nodiscard]] double value(const ParameterSpec& spec, double position);
// A number with or without the unit; nothing for any other text.
[[nodiscard]] std::optional<double> parse(const ParameterSpec& spec, const QString& text);
}  // namespace ParameterScale

}  // namespace quillmere
