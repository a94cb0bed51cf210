// SPDX-License-Identifier: MIT
#pragma once

#include <QPoint>
#include <QProcessEnvironment>
#include <QString>

namespace orvanta::tests {

/// Somebody with a mouse and a keyboard. Each deed is done when it returns; false when it could
/// not be.
class Person {
public:
    enum class Button { left = 1, right = 3 };

    explicit Person(const QProcessEnvironment& environment) : m_environment(environment) {}

    bool pointAt(QPoint place) const;
    bool click(Button button, QPoint place) const;
    /// A key by its name, for instance "Escape".
    bool press(const QString& key) const;

private:
    bool act(const QStringList& words) const;

    QProcessEnvironment m_environment;
};

} // namespace orvanta::tests
