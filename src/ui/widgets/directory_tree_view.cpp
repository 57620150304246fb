// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/widgets/directory_tree_view.h"

#include <QContextMenuEvent>
#include <QDrag>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QScopedValueRollback>
#include <QTimer>

#include "workspace/item_tree_model.h"

namespace keeper {

DirectoryTreeView::DirectoryTreeView(QWidget* parent) : QTreeView(parent) {
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setEditTriggers(NoEditTriggers);
    setSelectionMode(SingleSelection);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(true);
    setDragDropMode(DragDrop);
    // Between two rows there is nothing to drop on: a drop means the node under the mouse.
    setDragDropOverwriteMode(true);
    setAutoScroll(true);
    setAnimated(false);
}

void DirectoryTreeView::showBranchAlone(const QModelIndex& index) {
    for (QModelIndex open = index; open.isValid(); open = open.parent()) {
        const QModelIndex folder = open.parent();
        for (int row = 0; row < model()->rowCount(folder); ++row) {
            const QModelIndex sibling = model()->index(row, 0, folder);
            if (sibling != open && isExpanded(sibling)) {
                collapse(sibling);
            }
        }
    }
    expand(index);
}

void DirectoryTreeView::collapseRecursively(const QModelIndex& index) {
    // From the top down: what lies in a closed node needs no new layout.
    collapse(index);
    for (int row = 0; row < model()->rowCount(index); ++row) {
        const QModelIndex child = model()->index(row, 0, index);
        if (child.data(IsDirectoryRole).toBool()) {
            collapseRecursively(child);
        }
    }
}

QString DirectoryTreeView::keyAt(QPoint position) const {
    const QModelIndex index = indexAt(position);
    return index.isValid() ? index.data(KeyRole).toString() : QString();
}

bool DirectoryTreeView::isOnArrow(QPoint position) const {
    const QModelIndex index = indexAt(position);
    const int left = visualRect(index).x();
    return model()->hasChildren(index) && position.x() < left &&
           position.x() >= left - indentation();
}

void DirectoryTreeView::mousePressEvent(QMouseEvent* event) {
    m_pressedKey = keyAt(event->pos());
    m_isDragged = false;
    m_currentBeforePress = currentIndex();
    QTreeView::mousePressEvent(event);
}

void DirectoryTreeView::mouseReleaseEvent(QMouseEvent* event) {
    QTreeView::mouseReleaseEvent(event);
    const QString key = keyAt(event->pos());
    if (m_isDragged) {
        return;
    }
    const bool isLeftOrRight =
        event->button() == Qt::LeftButton || event->button() == Qt::RightButton;
    if (!key.isEmpty() && (isOnArrow(event->pos()) || key != m_pressedKey || !isLeftOrRight)) {
        // Not a click: what the press has made current on its way is taken back.
        setCurrentIndex(m_currentBeforePress);
        return;
    }
    if (isLeftOrRight) {
        Q_EMIT nodeClicked(key);
    }
    if (event->button() == Qt::RightButton && !key.isEmpty()) {
        Q_EMIT popupWanted(key, event->globalPosition().toPoint());
    }
}

void DirectoryTreeView::contextMenuEvent(QContextMenuEvent* event) {
    // That of the mouse comes with its release, after the click has chosen the node.
    const QModelIndex index = currentIndex();
    if (event->reason() == QContextMenuEvent::Keyboard && index.isValid()) {
        const QPoint at = viewport()->mapToGlobal(visualRect(index).center());
        Q_EMIT nodePressedByKey();
        Q_EMIT popupWanted(index.data(KeyRole).toString(), at);
    }
}

void DirectoryTreeView::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Space:
            Q_EMIT nodePressedByKey();
            return;
        case Qt::Key_Delete:
            Q_EMIT nodePressedByKey();
            Q_EMIT deletePressed();
            return;
        default: {
            const QScopedValueRollback<bool> moving(m_isKeyboardMoving, true);
            QTreeView::keyPressEvent(event);
        }
    }
}

void DirectoryTreeView::startDrag(Qt::DropActions /*actions*/) {
    if (m_pressedKey.isEmpty()) {
        return;
    }
    m_isDragged = true;
    auto* drag = new QDrag(this);
    auto* node = new QMimeData;
    node->setData(ItemTreeModel::nodeFormat(), m_pressedKey.toUtf8());
    drag->setMimeData(node);
    const QRect row = visualRect(currentIndex());
    drag->setPixmap(viewport()->grab(row & viewport()->rect()));
    drag->exec(Qt::MoveAction);
    setCurrentIndex(m_currentBeforePress);
}

void DirectoryTreeView::dragEnterEvent(QDragEnterEvent* event) {
    if (event->source() == this && event->mimeData()->hasFormat(ItemTreeModel::nodeFormat())) {
        event->acceptProposedAction();
    }
}

void DirectoryTreeView::dragMoveEvent(QDragMoveEvent* event) {
    QTreeView::dragMoveEvent(event);
    if (event->source() == this) {
        event->acceptProposedAction();
    }
}

void DirectoryTreeView::dropEvent(QDropEvent* event) {
    if (!event->mimeData()->hasFormat(ItemTreeModel::nodeFormat())) {
        return;
    }
    const QString source = QString::fromUtf8(event->mimeData()->data(ItemTreeModel::nodeFormat()));
    const QString target = keyAt(event->position().toPoint());
    event->acceptProposedAction();
    stopAutoScroll();
    setState(NoState);
    viewport()->update();
    // The questions that follow must not stand inside the desktop's drag.
    QTimer::singleShot(0, this, [this, source, target] { Q_EMIT nodeDropped(source, target); });
}

void DirectoryTreeView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QTreeView::currentChanged(current, previous);
    if (m_isKeyboardMoving && current.isValid()) {
        Q_EMIT nodeMoved(current.data(KeyRole).toString());
    }
}

}  // namespace keeper
