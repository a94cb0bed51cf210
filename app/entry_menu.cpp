// SPDX-License-Identifier: MIT
#include "app/entry_menu.h"

#include <QApplication>

namespace orvanta {
namespace {

constexpr qreal kFootnoteScale = 0.9;

QFont fontOf(MenuFont font) {
    QFont result = QApplication::font("QMenu");
    switch (font) {
    case MenuFont::body:
        break;
    case MenuFont::headline:
        result.setBold(true);
        break;
    case MenuFont::footnote:
        result.setPointSizeF(result.pointSizeF() * kFootnoteScale);
        break;
    }
    return result;
}

} // namespace

EntryMenu::EntryMenu(Look look, std::function<void(MenuEntryId)> choose)
    : m_look(std::move(look)), m_choose(std::move(choose)) {}

void EntryMenu::show(const std::vector<MenuEntry>& entries) {
    const bool isFirst = m_entries.empty();
    if (isFirst) {
        for (const MenuEntry& entry : entries) {
            addAction(entry);
        }
    }
    const QList<QAction*> actions = m_menu.actions();
    for (std::size_t index = 0; index < entries.size(); ++index) {
        if (isFirst || entries[index] != m_entries[index]) {
            update(*actions[static_cast<qsizetype>(index)], entries[index]);
        }
    }
    m_entries = entries;
}

void EntryMenu::addAction(const MenuEntry& entry) {
    if (entry.kind == MenuEntryKind::separator) {
        m_menu.addSeparator();
        return;
    }
    QAction* action =
        entry.kind == MenuEntryKind::text ? m_look.makeTextLine(m_menu) : new QAction(&m_menu);
    if (entry.font != MenuFont::body) {
        action->setFont(fontOf(entry.font));
    }
    action->setCheckable(entry.kind == MenuEntryKind::toggle);
    QObject::connect(action, &QAction::triggered, &m_menu,
                     [this, id = entry.id] { handleTriggered(id); });
    m_menu.addAction(action);
}

void EntryMenu::handleTriggered(MenuEntryId id) {
    // A click has toggled the mark; what it shows is not for the click to say.
    const QList<QAction*> actions = m_menu.actions();
    for (std::size_t index = 0; index < m_entries.size(); ++index) {
        if (m_entries[index].id == id) {
            actions[static_cast<qsizetype>(index)]->setChecked(m_entries[index].isChecked);
        }
    }
    m_choose(id);
}

/// The toolkit's setters stay silent when nothing changes.
void EntryMenu::update(QAction& action, const MenuEntry& entry) {
    if (entry.kind == MenuEntryKind::separator) {
        return;
    }
    action.setText(m_look.text(entry));
    action.setEnabled(entry.isEnabled);
    action.setChecked(entry.isChecked);
    action.setVisible(entry.isVisible);
}

} // namespace orvanta
