#pragma once
// The console's small text helpers: the model's UTF-8 words as Qt text, and
// the section heading label the style sheet draws in the booth look.
//
// Thread: main thread (widgets).

#include <QLabel>
#include <QString>

#include <string_view>

namespace velarion::console {

inline QString qt(std::string_view text) { return QString::fromUtf8(text.data(), qsizetype(text.size())); }

inline QLabel* heading(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setObjectName("heading");
    return label;
}

} // namespace velarion::console
