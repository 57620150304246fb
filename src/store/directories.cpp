// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/directories.h"

#include <utility>

#include "platform/database.h"
#include "store/entries.h"
#include "store/failure.h"
#include "store/numbering.h"

namespace keeper {

namespace {

bool isBigClass(const QString& dirPath) {
    return dirPath.size() <= 2;
}

void requireMovable(const QString& oldPath, const QString& newPath) {
    const auto refuse = [](const QString& text) {
        throw KeeperError(5, QStringLiteral("Directories.MoveTo"), text);
    };
    if (isBigClass(oldPath) || isBigClass(newPath)) {
        refuse(QStringLiteral("禁止移动分类目录！"));
    }
    if (!AreSameBigClass(oldPath, newPath)) {
        refuse(QStringLiteral("网络类和文件类的条目或目录不能互相移动。"));
    }
    if (newPath.size() > oldPath.size() && newPath.startsWith(oldPath)) {
        refuse(QStringLiteral("不能把目录移动到它自己的子目录之中。"));
    }
}

/// The directory and everything below it, the deepest first: a parent that is renumbered would
/// otherwise hand its new number to children that still carry the old one.
std::vector<QString> subtreeOf(Database& database, const QString& dirPath) {
    // ':' follows '9', so the range holds exactly the numbers that begin with the path.
    Statement statement(database,
                        "select dirPath from tb_Directory"
                        " where dirPath >= ?1 and dirPath < ?1 || ':' order by dirPath desc");
    statement.bind(1, dirPath);
    std::vector<QString> paths;
    while (statement.step()) {
        paths.push_back(statement.text(0));
    }
    return paths;
}

}  // namespace

void Directory::p_dirPath(const QString& number) {
    m_dirPath = number;
    m_parentDir = number.size() > 2 ? number.chopped(2) : number;
}

int Directories::Display(std::vector<Directory>& rows) {
    return guarded(m_context.prompt, QStringLiteral("Directories.Display"), 0, [&] {
        Statement statement(m_context.database,
                            "select dirPath, Title from tb_Directory order by dirPath");
        std::vector<Directory> found;
        while (statement.step()) {
            Directory& directory = found.emplace_back();
            directory.p_dirPath(statement.text(0));
            directory.m_Title = statement.text(1);
        }
        const int count = static_cast<int>(found.size());
        if (count > 0) {
            rows = std::move(found);
        }
        return count;
    });
}

bool Directories::Add(const Directory& directory) {
    return guardedRun(m_context.prompt, QStringLiteral("Directories.Add"), [&] {
        Statement(m_context.database,
                  "insert into tb_Directory (dirPath, parentDir, Title) values (?, ?, ?)")
            .bind(1, directory.p_dirPath())
            .bind(2, directory.p_parantDir())
            .bind(3, directory.m_Title)
            .run();
    });
}

bool Directories::Rename(const QString& dirPath, const QString& title) {
    return guarded(m_context.prompt, QStringLiteral("Directories.Rename"), false, [&] {
        return Statement(m_context.database, "update tb_Directory set Title = ? where dirPath = ?")
                   .bind(1, title)
                   .bind(2, dirPath)
                   .run() > 0;
    });
}

bool Directories::Delete(const QString& dirPath) {
    if (isBigClass(dirPath)) {
        return false;
    }
    return guarded(m_context.prompt, QStringLiteral("Directories.Delete"), false, [&] {
        return Statement(m_context.database, "delete from tb_Directory where dirPath = ?")
                   .bind(1, dirPath)
                   .run() > 0;
    });
}

void Directories::Clear(const QString& parentDir) {
    guardedRun(m_context.prompt, QStringLiteral("Directories.Clear"),
               [&] { deleteBelow(parentDir); });
}

bool Directories::ClearAll(const QString& parentDir, Entries& entries) {
    QString current = QStringLiteral("Directories.Clear");
    return guardedRun(m_context.prompt, current, [&] {
        Transaction transaction(m_context.database);
        deleteBelow(parentDir);
        current = QStringLiteral("Entries.DeleteLike");
        entries.deleteRowsLike(parentDir);
        transaction.commit();
    });
}

void Directories::deleteBelow(const QString& parentDir) {
    // A big class is its own parent and must survive its clearing.
    Statement(m_context.database, "delete from tb_Directory where parentDir = ?1 and dirPath <> ?1")
        .bind(1, parentDir)
        .run();
}

bool Directories::MoveTo(const QString& oldPath, const QString& newPath) {
    return guarded(m_context.prompt, QStringLiteral("Directories.MoveTo"), false, [&] {
        requireMovable(oldPath, newPath);
        Transaction transaction(m_context.database);
        const std::vector<QString> paths = subtreeOf(m_context.database, oldPath);
        if (paths.empty() || paths.back() != oldPath) {
            return false;
        }
        Statement statement(m_context.database,
                            "update tb_Directory set dirPath = ?, parentDir = ? where dirPath = ?");
        for (const QString& path : paths) {
            Directory moved;
            moved.p_dirPath(newPath + path.sliced(oldPath.size()));
            statement.reset();
            statement.bind(1, moved.p_dirPath()).bind(2, moved.p_parantDir()).bind(3, path).run();
        }
        transaction.commit();
        return true;
    });
}

}  // namespace keeper
