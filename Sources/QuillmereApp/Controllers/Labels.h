#pragma once

#include <QString>
#include <QStringList>
#include <algorithm>
#include <string_view>

#include "QuillmereApp/Words.h"

// Values of the core library in pickers: their labels, and their places in the list of them.
namespace quillmere {

[[nodiscard]] inline QString text(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

template <typename Values>
[[nodiscard]] QStringList labelsOf(const Values& values) {
    QStringList labels;
    for (const auto value : values)
        labels.append(Words::inTable(label(value)));
    return labels;
}

template <typename Values, typename Value>
[[nodiscard]] int indexIn(const Values& values, Value value) {
    return static_cast<int>(std::find(values.begin(), values.end(), value) - values.begin());
}

}  // namespace quillmere
