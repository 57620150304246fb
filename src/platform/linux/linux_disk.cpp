// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/linux_disk.h"

#include <QFileInfo>
#include <QStringList>
#include <algorithm>

#include "platform/linux/linux_files.h"

namespace keeper {
namespace {

/// The kernel's folder of a block device, with all links resolved; empty when there is none.
QString deviceFolder(const QString& root, const QString& link) {
    return QFileInfo(root + link).canonicalFilePath();
}

struct RootMount {
    QString number;
    QString source;
};

/// The last mount on "/"; later mounts cover earlier ones.
RootMount rootMount(const QString& root) {
    RootMount found;
    const auto lines = readSmallFile(root + QStringLiteral("/proc/self/mountinfo")).split('\n');
    for (const QByteArray& line : lines) {
        const auto fields = line.split(' ');
        const auto dash = fields.indexOf("-");
        if (dash < 6 || fields.size() < dash + 3 || fields.at(4) != "/") {
            continue;
        }
        found.number = QString::fromLatin1(fields.at(2));
        found.source = QString::fromUtf8(fields.at(dash + 2));
    }
    return found;
}

/// The device under the root file system. Anonymous numbers (0:x, as btrfs and overlays have) lead
/// nowhere, there the mount's source names the device.
QString rootDevice(const QString& root) {
    const RootMount mount = rootMount(root);
    if (!mount.number.isEmpty() && !mount.number.startsWith(QLatin1String("0:"))) {
        QString folder = deviceFolder(root, QStringLiteral("/sys/dev/block/") + mount.number);
        if (!folder.isEmpty()) {
            return folder;
        }
    }
    if (!mount.source.startsWith(QLatin1String("/dev/"))) {
        return {};
    }
    QString node = QFileInfo(root + mount.source).canonicalFilePath();
    if (node.isEmpty()) {
        node = mount.source;
    }
    return deviceFolder(root, QStringLiteral("/sys/class/block/") + QFileInfo(node).fileName());
}

QString wholeDisk(const QString& folder) {
    return QFileInfo::exists(folder + QStringLiteral("/partition"))
               ? QFileInfo(folder).absolutePath()
               : folder;
}

/// A drive with several controllers hangs under "virtual" all the same.
bool isVirtual(const QString& folder) {
    return folder.contains(QLatin1String("/devices/virtual/")) &&
           !folder.contains(QLatin1String("/devices/virtual/nvme-subsystem/"));
}

bool isFixedDisk(const QString& folder) {
    const QString name = QFileInfo(folder).fileName();
    if (isVirtual(folder) || folder.contains(QLatin1String("/usb")) ||
        name.startsWith(QLatin1String("sr")) || name.startsWith(QLatin1String("fd"))) {
        return false;
    }
    return readSmallFile(folder + QStringLiteral("/removable")).trimmed() != "1" &&
           readSmallFile(folder + QStringLiteral("/size")).trimmed().toLongLong() > 0;
}

/// The physical disks under a device, through mappings (LVM, LUKS, RAID), ordered by their place on
/// the bus. `depth` bounds a loop that only a broken tree could hold.
void collectPhysical(const QString& device, QStringList& disks, int depth = 0) {
    constexpr int kDeepest = 8;
    const QString disk = wholeDisk(device);
    const QString slaves = device + QStringLiteral("/slaves/");
    const QStringList below = namesIn(slaves);
    if (below.isEmpty()) {
        if (isFixedDisk(disk)) {
            disks.append(disk);
        }
        return;
    }
    if (depth < kDeepest) {
        for (const QString& name : below) {
            collectPhysical(QFileInfo(slaves + name).canonicalFilePath(), disks, depth + 1);
        }
    }
}

QStringList allFixedDisks(const QString& root) {
    QStringList disks;
    const QString block = root + QStringLiteral("/sys/block/");
    for (const QString& name : namesIn(block)) {
        const QString folder = QFileInfo(block + name).canonicalFilePath();
        // A memory card in a built-in slot does not call itself removable.
        const bool isCard =
            readSmallFile(folder + QStringLiteral("/device/type")).trimmed() == "SD";
        if (isFixedDisk(folder) && !isCard) {
            disks.append(folder);
        }
    }
    disks.sort();
    return disks;
}

/// The serial page of a SCSI disk: four bytes of header, then the number.
QString vitalProductSerial(const QByteArray& page) {
    constexpr qsizetype kHeader = 4;
    return page.size() > kHeader ? oneLine(page.mid(kHeader)) : QString();
}

QString deviceManagerSerial(const QString& root, const QString& disk) {
    const QByteArray number = readSmallFile(disk + QStringLiteral("/dev")).trimmed();
    const QByteArray data =
        readSmallFile(root + QStringLiteral("/run/udev/data/b") + QString::fromLatin1(number));
    for (const char* key : {"E:ID_SERIAL_SHORT=", "E:ID_WWN="}) {
        for (const QByteArray& line : data.split('\n')) {
            if (line.startsWith(key)) {
                return oneLine(line.mid(static_cast<qsizetype>(qstrlen(key))));
            }
        }
    }
    return {};
}

QString serialOf(const QString& root, const QString& disk) {
    for (const char* file : {"/serial", "/device/serial", "/wwid", "/device/wwid", "/device/cid"}) {
        QString serial = oneLine(readSmallFile(disk + QLatin1String(file)));
        if (!serial.isEmpty()) {
            return serial;
        }
    }
    QString serial = vitalProductSerial(readSmallFile(disk + QStringLiteral("/device/vpd_pg80")));
    return serial.isEmpty() ? deviceManagerSerial(root, disk) : serial;
}

}  // namespace

QString fixedDiskSerial(const QString& root) {
    QStringList disks;
    const QString device = rootDevice(root);
    if (!device.isEmpty()) {
        collectPhysical(device, disks);
        disks.sort();
    }
    if (disks.isEmpty()) {
        disks = allFixedDisks(root);
    }
    for (const QString& disk : disks) {
        QString serial = serialOf(root, disk);
        if (!serial.isEmpty()) {
            return serial;
        }
    }
    return {};
}

}  // namespace keeper
