// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/linux_machine.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include "platform/linux/linux_disk.h"

namespace keeper {
namespace {

const QString kDisk = QStringLiteral("/sys/devices/pci0/ata1/block/sda");
const QString kOther = QStringLiteral("/sys/devices/pci0/ata2/block/sdb");
const QString kStick = QStringLiteral("/sys/devices/pci0/usb1/1-1/block/sdc");

/// A tree like the one that the kernel shows.
class MachineTest : public testing::Test {
  protected:
    void write(const QString& path, const QByteArray& content) {
        QDir().mkpath(QFileInfo(root() + path).absolutePath());
        QFile file(root() + path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    void link(const QString& from, const QString& to) {
        QDir().mkpath(QFileInfo(root() + from).absolutePath());
        QFile::remove(root() + from);
        ASSERT_TRUE(QFile::link(root() + to, root() + from));
    }
    void addDisk(const QString& folder, const QString& number, const QByteArray& serial) {
        write(folder + QStringLiteral("/size"), "1000\n");
        write(folder + QStringLiteral("/removable"), "0\n");
        write(folder + QStringLiteral("/dev"), number.toLatin1() + '\n');
        if (!serial.isEmpty()) {
            write(folder + QStringLiteral("/device/serial"), serial);
        }
        link(QStringLiteral("/sys/block/") + QFileInfo(folder).fileName(), folder);
        link(QStringLiteral("/sys/dev/block/") + number, folder);
    }
    void addPartition(const QString& disk, const QString& name, const QString& number) {
        const QString folder = disk + QLatin1Char('/') + name;
        write(folder + QStringLiteral("/partition"), "1\n");
        link(QStringLiteral("/sys/dev/block/") + number, folder);
        link(QStringLiteral("/sys/class/block/") + name, folder);
    }
    void mountRoot(const QByteArray& number, const QByteArray& source) {
        write(QStringLiteral("/proc/self/mountinfo"),
              "20 1 0:5 / /proc rw - proc proc rw\n21 1 " + number +
                  " / / rw,relatime shared:1 - ext4 " + source + " rw\n" +
                  "22 1 8:99 / /home rw - ext4 /dev/sdb9 rw\n");
    }
    [[nodiscard]] QString root() const { return m_folder.path(); }
    [[nodiscard]] QString config() const { return root() + QStringLiteral("/home/config"); }
    [[nodiscard]] LinuxMachine machine() {
        return LinuxMachine({.root = root(),
                             .configFolder = config(),
                             .processorSignature = [this] { return signature; },
                             .interfaceAddresses = [this] { return addresses; },
                             .newId = [] { return QString(32, QLatin1Char('a')); }});
    }

    QString signature = QStringLiteral("BFEBFBFF000906EA");
    QMap<QString, QString> addresses;

  private:
    QTemporaryDir m_folder;
};

TEST_F(MachineTest, DiskIsTheFixedOneUnderTheRootFileSystem) {
    addDisk(kDisk, QStringLiteral("8:0"), "FIRST");
    addDisk(kOther, QStringLiteral("8:16"), " SECOND \n");
    addPartition(kOther, QStringLiteral("sdb2"), QStringLiteral("8:18"));
    mountRoot("8:18", "/dev/sdb2");
    EXPECT_EQ(machine().diskTag(), QStringLiteral("SECOND"));

    // btrfs: an anonymous device number, the source names the partition.
    mountRoot("0:30", "/dev/sdb2");
    EXPECT_EQ(machine().diskTag(), QStringLiteral("SECOND"));

    // LVM on LUKS on the first disk, reached through two mappings.
    addPartition(kDisk, QStringLiteral("sda3"), QStringLiteral("8:3"));
    const QString volume = QStringLiteral("/sys/devices/virtual/block/dm-1");
    const QString crypt = QStringLiteral("/sys/devices/virtual/block/dm-0");
    write(volume + QStringLiteral("/size"), "900\n");
    write(crypt + QStringLiteral("/size"), "900\n");
    link(volume + QStringLiteral("/slaves/dm-0"), crypt);
    link(crypt + QStringLiteral("/slaves/sda3"), kDisk + QStringLiteral("/sda3"));
    link(QStringLiteral("/sys/dev/block/253:1"), volume);
    mountRoot("253:1", "/dev/mapper/vg-root");
    EXPECT_EQ(machine().diskTag(), QStringLiteral("FIRST"));
}

TEST_F(MachineTest, RemovableAndVirtualDrivesNeverChangeTheDisk) {
    addDisk(kOther, QStringLiteral("8:16"), "FIXED");
    mountRoot("0:40", "overlay");
    const QString before = machine().diskTag();
    EXPECT_EQ(before, QStringLiteral("FIXED"));

    addDisk(kStick, QStringLiteral("8:32"), "STICK");
    addDisk(QStringLiteral("/sys/devices/virtual/block/zram0"), QStringLiteral("252:0"), "ZRAM");
    addDisk(QStringLiteral("/sys/devices/pci0/ata0/block/sr0"), QStringLiteral("11:0"), "OPTICAL");
    addDisk(QStringLiteral("/sys/devices/pci0/ata0/block/sdx"), QStringLiteral("8:48"),
            "CARTRIDGE");
    write(QStringLiteral("/sys/devices/pci0/ata0/block/sdx/removable"), "1\n");
    addDisk(QStringLiteral("/sys/devices/pci0/ata0/block/mmcblk0"), QStringLiteral("179:0"),
            "CARD");
    write(QStringLiteral("/sys/devices/pci0/ata0/block/mmcblk0/device/type"), "SD\n");
    EXPECT_EQ(machine().diskTag(), before);

    // Started from the stick: the machine is still the one with the fixed disk.
    mountRoot("8:32", "/dev/sdc");
    EXPECT_EQ(machine().diskTag(), before);
    // The names changed places at a reboot, the disks did not.
    QFile::remove(root() + QStringLiteral("/sys/block/sdb"));
    addDisk(QStringLiteral("/sys/devices/pci0/ata2/block/sda"), QStringLiteral("8:0"), "FIXED");
    mountRoot("8:0", "/dev/sda");
    EXPECT_EQ(machine().diskTag(), before);
}

TEST_F(MachineTest, DiskSerialComesFromWhateverTheDriverTells) {
    addDisk(kDisk, QStringLiteral("8:0"), "");
    mountRoot("8:0", "/dev/sda");
    EXPECT_EQ(fixedDiskSerial(root()), QString());
    write(QStringLiteral("/run/udev/data/b8:0"),
          "S:disk\nE:ID_WWN=0x5000\nE:ID_SERIAL_SHORT=UD3V\n");
    EXPECT_EQ(fixedDiskSerial(root()), QStringLiteral("UD3V"));
    write(kDisk + QStringLiteral("/device/vpd_pg80"), QByteArray("\x00\x80\x00\x05 PG80", 9));
    EXPECT_EQ(fixedDiskSerial(root()), QStringLiteral("PG80"));
    write(kDisk + QStringLiteral("/wwid"), "eui.0025\n");
    EXPECT_EQ(fixedDiskSerial(root()), QStringLiteral("eui.0025"));

    const QString head = QStringLiteral("/sys/devices/virtual/nvme-subsystem/nvme-subsys0/nvme0n1");
    addDisk(head, QStringLiteral("259:0"), "TWOPORTS");
    mountRoot("259:0", "/dev/nvme0n1");
    EXPECT_EQ(fixedDiskSerial(root()), QStringLiteral("TWOPORTS"));
}

TEST_F(MachineTest, FirmwareNamesTheModelAndDropsPlaceholders) {
    const QString dmi = QStringLiteral("/sys/class/dmi/id/");
    write(dmi + QStringLiteral("sys_vendor"), "LENOVO\n");
    write(dmi + QStringLiteral("product_name"), "20XW\n");
    write(dmi + QStringLiteral("product_sku"), "To Be Filled By O.E.M.\n");
    write(dmi + QStringLiteral("board_name"), "Default string\n");
    write(dmi + QStringLiteral("chassis_type"), "10\n");
    write(dmi + QStringLiteral("bios_version"), "N32ET75W\n");
    EXPECT_EQ(machine().firmwareTag(), QStringLiteral("LENOVO,20XW,10"));
    EXPECT_EQ(machine().processorTag(), signature);
}

TEST_F(MachineTest, MissingSourcesGiveTagsOfTheSystemIdThatDoNotRevealIt) {
    const QByteArray id = "0123456789abcdef0123456789abcdef";
    write(QStringLiteral("/etc/machine-id"), id + '\n');
    signature.clear();
    auto first = machine();
    const QStringList tags{first.firmwareTag(), first.processorTag(), first.diskTag()};
    EXPECT_NE(tags.at(0), tags.at(1));
    EXPECT_NE(tags.at(1), tags.at(2));
    for (const QString& tag : tags) {
        EXPECT_EQ(tag.size(), 32);
        EXPECT_FALSE(tag.contains(QString::fromLatin1(id), Qt::CaseInsensitive));
    }
    auto again = machine();
    EXPECT_EQ(QStringList({again.firmwareTag(), again.processorTag(), again.diskTag()}), tags);
    EXPECT_FALSE(QFileInfo::exists(config()));

    // A first boot that is not over, and the older place of the id.
    write(QStringLiteral("/etc/machine-id"), "uninitialized\n");
    write(QStringLiteral("/var/lib/dbus/machine-id"), id);
    EXPECT_EQ(machine().diskTag(), tags.at(2));
    write(QStringLiteral("/etc/machine-id"), "fedcba9876543210fedcba9876543210\n");
    EXPECT_NE(machine().diskTag(), tags.at(2));
}

TEST_F(MachineTest, AnIdThatCannotBeReadNowGivesWayToNoOther) {
    // A folder stands for a disk that fails: it opens, and its reading does not.
    write(QStringLiteral("/etc/machine-id/x"), "x");
    write(QStringLiteral("/var/lib/dbus/machine-id"), "0123456789abcdef0123456789abcdef");
    EXPECT_ANY_THROW((void)machine().diskTag());
    EXPECT_FALSE(QFileInfo::exists(config()));
}

TEST_F(MachineTest, LastResortIsARandomIdThatStays) {
    const QString tag = machine().diskTag();
    const QFileInfo stored(config() + QStringLiteral("/machine-id"));
    ASSERT_TRUE(stored.exists());
    EXPECT_EQ(stored.permissions() & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther |
                                      QFile::WriteOther | QFile::ExeOwner),
              QFile::Permissions());
    EXPECT_EQ(machine().diskTag(), tag);

    // A damaged id is an error: a new one would make the machine a stranger to its databases.
    write(QStringLiteral("/home/config/machine-id"), "aaaa\n");
    EXPECT_ANY_THROW((void)machine().diskTag());
    QFile kept(stored.filePath());
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), "aaaa\n");
}

TEST_F(MachineTest, AddressIsThatOfTheDefaultRouteElseAHardwareAddress) {
    write(QStringLiteral("/sys/class/net/lo/address"), "00:00:00:00:00:00\n");
    write(QStringLiteral("/sys/class/net/br0/address"), "02:00:00:00:00:01\n");
    write(QStringLiteral("/sys/class/net/wlan0/address"), "a4:c3:f0:00:00:02\n");
    write(QStringLiteral("/sys/class/net/wlan0/device/vendor"), "0x8086\n");
    EXPECT_FALSE(machine().isConnectedToNetwork());
    EXPECT_TRUE(machine().networkAddress().isHardware);
    EXPECT_EQ(machine().networkAddress().text, QStringLiteral("A4:C3:F0:00:00:02"));

    const QByteArray header = "Iface Destination Gateway Flags RefCnt Use Metric Mask MTU W IRTT\n";
    write(QStringLiteral("/proc/net/route"),
          header +
              "eth0\t00000000\t0102\t0003\t0\t0\t600\t00000000\t0\t0\t0\n"
              "wlan0\t00000000\t0102\t0003\t0\t0\t100\t00000000\t0\t0\t0\n"
              "vpn0\t00000000\t0102\t0003\t0\t0\t1\t00000080\t0\t0\t0\n");
    addresses = {{QStringLiteral("eth0"), QStringLiteral("10.0.0.1")},
                 {QStringLiteral("wlan0"), QStringLiteral("10.0.0.2")}};
    EXPECT_TRUE(machine().isConnectedToNetwork());
    EXPECT_FALSE(machine().networkAddress().isHardware);
    EXPECT_EQ(machine().networkAddress().text, QStringLiteral("10.0.0.2"));

    write(QStringLiteral("/proc/net/route"), header);
    const QByteArray zeros(32, '0');
    write(QStringLiteral("/proc/net/ipv6_route"),
          zeros + " 00 " + zeros + " 00 " + zeros + " 00000400 1 0 00000003 eth0\n" + zeros +
              " 00 " + zeros + " 00 " + zeros + " ffffffff 1 0 00200200 lo\n");
    addresses = {{QStringLiteral("eth0"), QStringLiteral("2001:db8::5")}};
    EXPECT_EQ(machine().networkAddress().text, QStringLiteral("2001:db8::5"));
}

TEST_F(MachineTest, TagsStayOneLineOfBoundedLength) {
    write(QStringLiteral("/sys/class/dmi/id/sys_vendor"), QByteArray(300, 'v'));
    write(QStringLiteral("/sys/class/dmi/id/product_name"), "a\tb\nc  d\n");
    EXPECT_EQ(machine().firmwareTag().size(), 255);
    QFile::remove(root() + QStringLiteral("/sys/class/dmi/id/sys_vendor"));
    EXPECT_EQ(machine().firmwareTag(), QStringLiteral("a b c d"));
    write(QStringLiteral("/proc/sys/kernel/hostname"), "书房\n");
    EXPECT_EQ(machine().computerName(), QStringLiteral("书房"));
}

TEST(LinuxMachine, ThisMachineHasStableTags) {
    QTemporaryDir config;
    LinuxMachine first(LinuxMachine::systemSources(config.path()));
    LinuxMachine second(LinuxMachine::systemSources(config.path()));
    EXPECT_FALSE(first.firmwareTag().isEmpty());
    EXPECT_FALSE(first.processorTag().isEmpty());
    EXPECT_EQ(first.firmwareTag(), second.firmwareTag());
    EXPECT_EQ(first.processorTag(), second.processorTag());
    EXPECT_EQ(first.diskTag(), second.diskTag());
    EXPECT_FALSE(first.computerName().isEmpty());
}

}  // namespace
}  // namespace keeper
