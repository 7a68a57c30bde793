#pragma once

#include <QCoreApplication>
#include <QDateTime>
#include <QString>
#include <exception>
#include <string_view>

#include "QuillmereCore/Util/Message.h"

namespace quillmere {

// Texts of functions that belong to no object, as Words::tr("…"), and what the core says, in the language of
// the window. Threads: any.
class Words {
    Q_DECLARE_TR_FUNCTIONS(Words)

public:
    Words() = delete;

    [[nodiscard]] static QString of(const Message& message);
    // A Failure in the user's language, any other error as it is.
    [[nodiscard]] static QString of(const std::exception& error);
    // A text of one of the core's tables, which says by translatable() that the catalogues have it.
    [[nodiscard]] static QString inTable(std::string_view text);

    // Day and time of day, to the minute, in local time.
    [[nodiscard]] static QString of(const QDateTime& date);

    // What a candidate is called where its name is kept: the same in every language.
    [[nodiscard]] static QString keptName(int candidate);
    // The same of so many sounds of the map.
    [[nodiscard]] static QString keptNameOfMap(int sounds);
    // A kept name for people: one of these in their language, that of a file as it is.
    [[nodiscard]] static QString ofSound(const QString& keptName);
};

}  // namespace quillmere
