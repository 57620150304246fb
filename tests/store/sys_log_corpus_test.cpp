// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace keeper {
namespace {

/// Inputs that fuzzing found worth keeping; a broken promise aborts.
TEST(SysLogCorpus, EveryInputKeepsThePromises) {
    const QDir corpus(QStringLiteral(KEEPER_CORPUS));
    const QStringList names = corpus.entryList(QDir::Files);
    ASSERT_GT(names.size(), 5);
    for (const QString& name : names) {
        QFile file(corpus.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        SCOPED_TRACE(name.toStdString());
        EXPECT_EQ(LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                         static_cast<std::size_t>(bytes.size())),
                  0);
    }
}

}  // namespace
}  // namespace keeper
