#include "qt/services/QtSettingsStore.h"
#include "testsupport/FileSizeLimit.h"
#include "testsupport/ScratchDir.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fstream>

using namespace zav;

// The per-user settings in a fresh folder: <dir>/ZAV/ZAV.conf.
TEST(QtSettingsStore, ValuesPersistPerSectionASectionGoesWholeAndAFailedWriteIsTold) {
    QTemporaryDir dir;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dir.path());
    const std::string file = dir.filePath("ZAV/ZAV.conf").toStdString();
    const std::string odd = "/J\xC3\xB6rg, \"A\"; b=c.zav";
    QtSettingsStore().SaveSetting("default", "MRUF1", odd);
    QtSettingsStore().SaveSetting("default", "Odd", "@Invalid()");
    QtSettingsStore().SaveSetting("gps", "Beep", "");
    QtSettingsStore store;
    EXPECT_EQ(store.GetSetting("default", "MRUF1", "") + store.GetSetting("default", "Odd", "") +
                  store.GetSetting("gps", "Beep", "none") + store.GetSetting("gps", "Port", "1"),
              odd + "@Invalid()1");
    store.DeleteSetting("default");
    EXPECT_EQ(QtSettingsStore().GetSetting("default", "MRUF1", "gone") + store.WriteError(),
              "gone");
    EXPECT_EQ(QtSettingsStore().GetSetting("gps", "Beep", "none"), "");
    std::ofstream(file) << "[default]\nMRUF1=/a/b,c.zav\n"; // hand-edited: commas and all
    EXPECT_EQ(QtSettingsStore().GetSetting("default", "MRUF1", ""), "/a/b,c.zav");
    {
        test::FileSizeLimit full(10); // a full disk for this process
        store.SaveSetting("default", "Profile", std::string(200, 'p'));
    }
    EXPECT_EQ(store.WriteError() + "|" + test::ReadFile(file),
              "cannot write " + file + "|[default]\nMRUF1=/a/b,c.zav\n");
}
