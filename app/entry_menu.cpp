// SPDX-License-Identifier: MIT
#include "app/entry_menu.h"

#include <QApplication>

namespace orvanta {
namespace {

constexpr qreal kFootnoteScale = 0.9;

/// Desktops set the font in points or in pixels.
void shrink(QFont& font) {
    if (font.pixelSize() > 0) {
        font.setPixelSize(qRound(font.pixelSize() * kFootnoteScale));
    } else {
        font.setPointSizeF(font.pointSizeF() * kFootnoteScale);
    }
}

QFont fontOf(MenuFont font) {
    QFont result = QApplication::font("QMenu");
    switch (font) {
    case MenuFont::body:
        break;
    case MenuFont::headline:
        result.setBold(true);
        break;
    case MenuFont::footnote:
        shrink(result);
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
    m_choose(id);
    // A click has toggled the mark; what it shows is not for the click to say. Later, so that the
    // host is not told of a mark that goes and comes back.
    QMetaObject::invokeMethod(
        &m_menu, [this] { restoreMarks(); }, Qt::QueuedConnection);
}

void EntryMenu::restoreMarks() {
    const QList<QAction*> actions = m_menu.actions();
    for (std::size_t index = 0; index < m_entries.size(); ++index) {
        actions[static_cast<qsizetype>(index)]->setChecked(m_entries[index].isChecked);
    }
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
