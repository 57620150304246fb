// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/file_tree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <QFile>
#include <QFileInfo>
#include <QList>
#include <cerrno>
#include <cstring>
#include <memory>

#include "platform/unique_fd.h"

namespace keeper {
namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

/// Works on handles, not on paths, so that a folder swapped for a link meanwhile leads nowhere.
class TreeRemover {
  public:
    explicit TreeRemover(dev_t device) : m_device(device) {}

    void removeContent(UniqueFd folder, const QByteArray& path) {
        // A folder without the right to write would keep its children.
        ::fchmod(folder.get(), 0700);
        const std::unique_ptr<DIR, CloseFolder> listing(::fdopendir(folder.get()));
        if (!listing) {
            note(path);
            return;
        }
        const int handle = folder.release();
        // Read to the end first: a deletion may make a listing skip names.
        for (const QByteArray& name : childrenOf(listing.get(), path)) {
            removeChild(handle, name.constData(), path + '/' + name);
        }
    }

    void note(const QByteArray& path, int number = errno) {
        m_left.append(QFile::decodeName(path) + QStringLiteral(": ") +
                      QString::fromLocal8Bit(std::strerror(number)));
    }

    [[nodiscard]] const QStringList& left() const { return m_left; }

  private:
    QList<QByteArray> childrenOf(DIR* folder, const QByteArray& path) {
        QList<QByteArray> names;
        for (;;) {
            errno = 0;
            const dirent* child = ::readdir(folder);
            if (child == nullptr) {
                if (errno != 0) {
                    note(path);
                }
                return names;
            }
            if (std::strcmp(child->d_name, ".") != 0 && std::strcmp(child->d_name, "..") != 0) {
                names.append(QByteArray(child->d_name));
            }
        }
    }

    void removeChild(int parent, const char* name, const QByteArray& path) {
        struct stat state {};
        if (::fstatat(parent, name, &state, AT_SYMLINK_NOFOLLOW) != 0) {
            note(path);
            return;
        }
        if (!S_ISDIR(state.st_mode)) {
            if (::unlinkat(parent, name, 0) != 0) {
                note(path);
            }
            return;
        }
        if (state.st_dev != m_device) {
            note(path, EXDEV);
            return;
        }
        constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
        UniqueFd folder(::openat(parent, name, flags));
        if (!folder.isValid() && errno == EACCES) {
            // Without the right to read it cannot be opened; the name may have become a link only
            // between two calls, and then the second opening refuses it.
            if (::fchmodat(parent, name, 0700, 0) == 0) {
                folder = UniqueFd(::openat(parent, name, flags));
            }
        }
        if (!folder.isValid()) {
            note(path);
            return;
        }
        removeContent(std::move(folder), path);
        if (::unlinkat(parent, name, AT_REMOVEDIR) != 0) {
            note(path);
        }
    }

    dev_t m_device;
    QStringList m_left;
};

}  // namespace

QStringList removeTree(const QString& folder) {
    const QFileInfo info(folder);
    const QByteArray target =
        QFile::encodeName(info.isSymLink() ? info.canonicalFilePath() : folder);
    if (target.isEmpty()) {  // a link that leads nowhere
        QFile::remove(folder);
        return {};
    }
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    UniqueFd handle(::open(target.constData(), flags));
    if (!handle.isValid() && errno == EACCES) {
        ::chmod(target.constData(), 0700);
        handle = UniqueFd(::open(target.constData(), flags));
    }
    struct stat state {};
    if (!handle.isValid() || ::fstat(handle.get(), &state) != 0) {
        if (errno == ENOENT) {
            return {};
        }
        TreeRemover failed(0);
        failed.note(target);
        return failed.left();
    }
    TreeRemover remover(state.st_dev);
    remover.removeContent(std::move(handle), target);
    if (::rmdir(target.constData()) != 0) {
        remover.note(target);
    } else if (info.isSymLink()) {
        QFile::remove(folder);
    }
    return remover.left();
}

}  // namespace keeper
