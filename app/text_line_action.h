// SPDX-License-Identifier: MIT
#pragma once

#include <QWidgetAction>

namespace orvanta {

/// A line of a menu that the toolkit draws itself: shows the action's text as it is, in as many
/// lines as it has, where the toolkit's own entries have one line and read "&" as a mnemonic.
class TextLineAction : public QWidgetAction {
public:
    using QWidgetAction::QWidgetAction;

protected:
    QWidget* createWidget(QWidget* parent) override;
};

} // namespace orvanta
