// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// The whole main window at 100,000 entries in 2,000 directories, beside a bulk-filled QTreeWidget
// of as many rows in the same run. Both read the same database and are painted. Run with
// QT_QPA_PLATFORM=offscreen.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTreeView>
#include <QTreeWidget>
#include <memory>

#include "crypto/cryptor3.h"
#include "crypto/cryptor_host.h"
#include "store/column_cipher.h"
#include "store/ent_logs.h"
#include "store/numbering.h"
#include "store/schema.h"
#include "ui/frm_main.h"
#include "ui/widgets/directory_tree_view.h"
#include "workspace/directory_commands.h"
#include "workspace/edit_pane.h"
#include "workspace/entry_disposal.h"
#include "workspace/form_size.h"
#include "workspace/sheets.h"
#include "workspace/tree_drag.h"

namespace keeper {
namespace {

using namespace Qt::StringLiterals;

constexpr int kDirectories = 2'000;
constexpr int kEntriesEach = 50;

class NoPrompt final : public Prompt {
  public:
    Answer messageBox(const QString& text, Icon /*icon*/, Buttons /*buttons*/,
                      const QString& /*title*/, std::optional<Answer> /*preset*/) override {
        qFatal("%s", qPrintable(text));
    }
    std::optional<QString> inputBox(const QString& /*prompt*/, const QString& /*title*/,
                                    const QString& /*defaultText*/) override {
        return {};
    }
    QString openFile(const QString&, const QString&, const QString&) override { return {}; }
    QString saveFile(const QString&, const QString&, const QString&) override { return {}; }
    QString chooseFolder(const QString&, const QString&) override { return {}; }
};

class SilentHost final : public CryptorHost {
  public:
    void showMessage(Severity /*severity*/, const QString& text) override {
        qFatal("%s", qPrintable(text));
    }
    void turnEventLoop() override {}
};

class PlainColumns final : public ColumnKey {
  public:
    [[nodiscard]] bool p_idpPwdSwitch() const override { return false; }
    [[nodiscard]] QString p_plainIdpPwd() const override { return {}; }
};

class Owner final : public PrivateFolderOwner {
  public:
    [[nodiscard]] QString p_userName() const override { return u"bench"_s; }
    [[nodiscard]] QString p_privateFolder() const override { return u"/nowhere/MORV - bench"_s; }
    [[nodiscard]] QString p_lgnKeyTip() const override { return {}; }
};

class OpenGate final : public AuthorityGate {
  public:
    bool CheckAuthority(bool /*isNeeded*/) override { return true; }
};

class NoBeep final : public Beeper {
  public:
    void MessageBeep(Sound /*sound*/) override {}
};

/// A whole main window over a database of its own, in a real file.
class World {
  public:
    World() {
        m_database.create(m_folder.filePath(u"a.db"_s), u"key"_s);
        createSchema(m_database, m_clock.now());
        Transaction transaction(m_database);
        m_database.execute("delete from tb_Entry");
        m_settings.p_recentUpdateAmount(10);
        int made = 0;
        for (int big = 1; big <= 3; ++big) {
            for (int first = 1; first <= 26 && made < kDirectories; ++first) {
                const QString upper = u'0' + QString::number(big) + pair(first);
                addDirectory(upper, made++);
                for (int second = 1; second <= 25 && made < kDirectories; ++second) {
                    addDirectory(upper + pair(second), made++);
                }
            }
        }
        transaction.commit();
        m_settings.p_mainSizeType(1);
        m_window.attach({{workspace, sheets, m_commands, m_drag}, pane, m_disposal, m_size});
        pane.SetEditState(EditState::Browse);
        m_window.start();
        m_window.show();
        tree = m_window.findChild<DirectoryTreeView*>();
    }
    static World& instance() {
        if (!s_world) {
            s_world = std::make_unique<World>();
        }
        return *s_world;
    }
    /// Windows must go before the application.
    static void end() { s_world.reset(); }

  private:
    static inline std::unique_ptr<World> s_world;

    static QString pair(int number) {
        return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
    }
    void addDirectory(const QString& number, int made) {
        Directory directory;
        directory.p_dirPath(number);
        directory.m_Title = u"目录 "_s + QString::number(made);
        directories.Add(directory);
        for (int entry = 1; entry <= kEntriesEach; ++entry) {
            const QString title = u"网上银行账户 "_s + QString::number(made * kEntriesEach + entry);
            if (number.startsWith(u"03")) {
                Fil fil;
                fil.p_No(number + pair(entry));
                fil.m_Title = title;
                fil.m_pwdName = kCustomName;
                m_fils.Add(fil);
            } else {
                Web web;
                web.p_No(number + pair(entry));
                web.m_Title = title;
                web.m_pwdName = web.m_numName = kCustomName;
                web.m_customPwd = u"password"_s;
                web.m_Address = u"https://example.org"_s;
                m_webs.Add(web);
            }
        }
    }

    QTemporaryDir m_folder;
    SystemClock m_clock;
    NoPrompt m_prompt;
    Database m_database{{.keyRounds = 1000}};
    PlainColumns m_columns;
    SilentHost m_host;
    Cryptor3 m_cryptor{m_host};
    ColumnCipher m_cipher{m_columns, m_cryptor};
    StoreContext m_context{m_database, m_prompt, m_clock, m_cipher};

  public:
    Directories directories{m_context};
    Entries entries{m_context};

  private:
    Webs m_webs{m_context, entries};
    Prgs m_prgs{m_context, entries};
    Fils m_fils{m_context, entries};
    EntLogs m_entLogs{m_context};
    SysLogs m_sysLogs{m_context};
    AssPwds m_assPwds{m_context, m_entLogs};
    AssNums m_assNums{m_context};
    Settings m_settings{m_database, m_prompt, m_clock};
    UserFolders m_folders;
    Owner m_owner;
    FileOperator m_files{m_folders, m_clock, m_prompt, m_owner};
    OpenGate m_gate;
    NoFillMonitor m_monitor;
    NoDigest m_digest;
    NoBeep m_beeper;
    frmMain m_window;

  public:
    Workspace workspace{{m_prompt, m_clock, m_files, m_settings, directories, entries, m_webs,
                         m_prgs, m_fils, m_assPwds, m_assNums, m_sysLogs, m_gate, m_monitor,
                         m_digest, m_beeper, m_window}};
    SheetLists lists{workspace};
    EditPane pane{workspace, lists};
    Sheets sheets{workspace, lists, pane};
    DirectoryTreeView* tree = nullptr;

  private:
    EntryDisposal m_disposal{workspace, lists, sheets, pane};
    DirectoryCommands m_commands{workspace, lists, sheets, pane};
    TreeDrag m_drag{workspace, lists, sheets, pane, m_commands, m_disposal};
    FormSize m_size{workspace};
};

/// Layout and painting of all that has changed in the window.
void settle() {
    QApplication::sendPostedEvents();
    QApplication::processEvents();
}

double heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

double peakMiB() {
    QFile file(u"/proc/self/status"_s);
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith("VmHWM:")) {
            return line.mid(6).trimmed().split(' ').first().toDouble() / 1024;
        }
    }
    return 0;
}

void paint(QTreeView& view) {
    view.resize(400, 800);
    benchmark::DoNotOptimize(view.grab());
}

void openBigClasses(QTreeView& view) {
    for (int row = 0; row < view.model()->rowCount(); ++row) {
        view.expand(view.model()->index(row, 0));
    }
}

/// The same rows as items, in the fastest way: built apart and added at once.
void fillWidget(World& world, QTreeWidget& widget) {
    widget.setUniformRowHeights(true);
    widget.setHeaderHidden(true);
    std::vector<Directory> directories;
    world.directories.Display(directories);
    QHash<QString, QTreeWidgetItem*> nodes;
    nodes.reserve(static_cast<qsizetype>(directories.size()));
    QList<QTreeWidgetItem*> roots;
    for (const Directory& directory : directories) {
        auto* item = new QTreeWidgetItem(QStringList(directory.m_Title));
        nodes.insert(directory.p_dirPath(), item);
        QTreeWidgetItem* parent = nodes.value(GetParent(directory.p_dirPath()));
        if (parent == nullptr) {
            roots << item;
        } else {
            parent->addChild(item);
        }
    }
    std::string path;
    QTreeWidgetItem* parent = nullptr;
    world.entries.Display([&](const EntryLine& line) {
        if (line.dirPath != path) {
            path = line.dirPath;
            parent = nodes.value(EntryLine::text(path));
        }
        auto* item = new QTreeWidgetItem(parent, QStringList(EntryLine::text(line.title)));
        item->setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicator);
    });
    widget.addTopLevelItems(roots);
    openBigClasses(widget);
}

void RefreshSheets_painted(benchmark::State& state) {
    World& world = World::instance();
    for (auto _ : state) {
        world.sheets.RefreshSheets();
        settle();
    }
}
BENCHMARK(RefreshSheets_painted)->Unit(benchmark::kMillisecond);

void peer_QTreeWidget_painted(benchmark::State& state) {
    World& world = World::instance();
    for (auto _ : state) {
        auto widget = std::make_unique<QTreeWidget>();
        fillWidget(world, *widget);
        paint(*widget);
        state.PauseTiming();
        widget.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(peer_QTreeWidget_painted)->Unit(benchmark::kMillisecond);

template <typename Settle>
void expandAll(benchmark::State& state, QTreeView& view, Settle drawn) {
    for (auto _ : state) {
        view.expandAll();
        drawn();
        state.PauseTiming();
        view.collapseAll();
        drawn();
        state.ResumeTiming();
    }
}

void expandAll_window(benchmark::State& state) {
    World& world = World::instance();
    world.sheets.RefreshSheets();
    expandAll(state, *world.tree, settle);
}
BENCHMARK(expandAll_window)->Unit(benchmark::kMillisecond);

void expandAll_peer_QTreeWidget(benchmark::State& state) {
    QTreeWidget widget;
    fillWidget(World::instance(), widget);
    expandAll(state, widget, [&widget] { paint(widget); });
}
BENCHMARK(expandAll_peer_QTreeWidget)->Unit(benchmark::kMillisecond);

void keystroke(benchmark::State& state, const QString& text) {
    World& world = World::instance();
    world.sheets.RefreshSheets();
    for (auto _ : state) {
        world.sheets.searchFor(text);
        settle();
    }
}
// The last title, a title that is not there, a number that no line holds.
BENCHMARK_CAPTURE(keystroke, lastTitle, u"网上银行账户 100000"_s)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(keystroke, noTitle, u"网上银行账户 0"_s)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(keystroke, noNumber, u"01999999"_s)->Unit(benchmark::kMillisecond);

void selectEntry(benchmark::State& state) {
    World& world = World::instance();
    world.sheets.RefreshSheets();
    int step = 0;
    for (auto _ : state) {
        world.sheets.clickTree(step++ % 2 == 0 ? u"ent01050748"_s : u"ent02030211"_s);
        settle();
    }
}
BENCHMARK(selectEntry)->Unit(benchmark::kMillisecond);

/// With all that belongs to it: entry, companion row, both logs, flushed to disk.
void saveEntry(benchmark::State& state) {
    World& world = World::instance();
    world.sheets.RefreshSheets();
    int step = 0;
    for (auto _ : state) {
        world.sheets.clickTree(u"ent01050748"_s);
        world.pane.EnterModify(true);
        world.pane.editField(PaneField::Title, u"改名 "_s + QString::number(step));
        world.pane.typePassword(u"password "_s + QString::number(step++));
        world.pane.mn_save();
        settle();
    }
}
BENCHMARK(saveEntry)->Unit(benchmark::kMillisecond);

void memoryOfModels(benchmark::State& state) {
    World& world = World::instance();
    for (auto _ : state) {
        const auto clear = [&world] {
            for (ItemListModel* list : {&world.workspace.lsbSearch, &world.workspace.lsbBookmark,
                                        &world.workspace.lsbRecentUpdate}) {
                list->assign({});
            }
            world.workspace.tvwDirectory.assign({});
        };
        clear();
        const double before = heapInUse();
        world.sheets.RefreshSheets();
        state.counters["models_MiB"] = (heapInUse() - before) / (1024.0 * 1024.0);
        state.counters["rows"] = world.workspace.lsbSearch.count();
        state.counters["peak_of_run_MiB"] = peakMiB();
    }
}
BENCHMARK(memoryOfModels)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace keeper

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    keeper::World::end();
    return 0;
}
