// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QTreeView>

namespace keeper {

/// The tree `tvwDirectory`: tells what mouse and keyboard did to which node, and moves nothing by
/// itself. Nodes are told by their keys; the empty key is the empty part of the tree.
class DirectoryTreeView final : public QTreeView {
    Q_OBJECT

  public:
    explicit DirectoryTreeView(QWidget* parent = nullptr);

    /// Opens the node and closes what is open beside it and beside what it lies in.
    void showBranchAlone(const QModelIndex& index);
    void collapseRecursively(const QModelIndex& index);

  Q_SIGNALS:
    /// A button of the mouse went up.
    void nodeClicked(const QString& key);
    void nodePressedByKey();
    /// Right button, or the menu key.
    void popupWanted(const QString& key, QPoint globalPosition);
    void nodeDropped(const QString& source, const QString& target);
    /// The keyboard moved the selection.
    void nodeMoved(const QString& key);
    void deletePressed();

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void startDrag(Qt::DropActions actions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

  private:
    [[nodiscard]] QString keyAt(QPoint position) const;
    [[nodiscard]] bool isOnArrow(QPoint position) const;

    QString m_pressedKey;
    /// A press alone chooses nothing: a drag that comes to nothing leaves the selection as it was.
    QPersistentModelIndex m_currentBeforePress;
    bool m_isKeyboardMoving = false;
    bool m_isDragged = false;
};

}  // namespace keeper
