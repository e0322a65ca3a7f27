// The research dialogs on Qt: each is driven through its widgets as a user would, and its
// picture saved (build/qt-shots/).
#include <qvnrt/qt/QtUiHost.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>
#include <QDir>

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <qvnrt/CInetResearch.h>
#include <qvnrt/CPrivateProfile.h>
#include <qvnrt/CInetSearchInfoDlg.h>
#include <qvnrt/CInetSymbolSearchDlg.h>
#include <qvnrt/CSymbolHomePagesDlg.h>

#include "QtTestApp.h"
#include "support/TempDir.h"

namespace {

constexpr char kServices[] =
    "[Internet Background Page]\n"
    "Quotes=http://example.com/q?s=<SYMBOL>\n"
    "Companies=http://example.com/c?n=<EXTRA>\n";

template <class Widget>
Widget& Control(QDialog& dialog, int number) {
    auto* widget = dialog.findChild<Widget*>(QStringLiteral("control%1").arg(number));
    if (!widget) throw std::runtime_error("no control " + std::to_string(number));
    return *widget;
}

std::vector<std::string> Rows(QTreeWidget& list) {
    std::vector<std::string> rows;
    for (int row = 0; row < list.topLevelItemCount(); ++row) {
        rows.push_back(list.topLevelItem(row)->text(0).toStdString() + " " +
                       list.topLevelItem(row)->text(1).toStdString());
    }
    return rows;
}

std::string Value(const char* file, const char* section, const char* key) {
    CString value;
    CPrivateProfile(file).GetValue(section, key, "", value);
    return value.str();
}

bool Grab(QWidget& widget, const char* name) {
    const char* root = std::getenv("QVNRT_TEST_BINARY_DIR");
    const QString dir = QString::fromUtf8(root ? root : ".") + "/qt-shots";
    QDir().mkpath(dir);
    const QPixmap picture = widget.grab();
    return !picture.isNull() && picture.save(dir + "/" + name + ".png");
}

class QtResearch : public ::testing::Test {
protected:
    void SetUp() override {
        qvnrt::test::TestApp();
        home.host().write("inetres.txt", kServices);
        qvnrt::SetUiHost(&host);
    }
    void TearDown() override { qvnrt::SetUiHost(nullptr); }

    // Runs the panel with `drive` called once it is shown; the panel's answer.
    template <class Panel>
    int Run(Panel& panel, std::function<void(QDialog&)> drive) {
        bool driven = false;
        host.SetPanelShownHook([&](QDialog& dialog, qvnrt::Panel&) {
            drive(dialog);
            driven = true;
            if (dialog.isVisible()) dialog.reject();
        });
        const int answer = host.RunModal(panel);
        EXPECT_TRUE(driven);
        return answer;
    }

    qvnrt::test::IsolatedHome home;
    qvnrt::QtUiHost host;
};

// A symbol given: its form holds the address template; Add moves both into the list after
// the file's pages, and OK writes the list back.
TEST_F(QtResearch, HomePagesAddsTheTypedPage) {
    home.host().write("HomePages.txt", "[HomePages]\nMSFT=http://www.msft.com/\n");
    CSymbolHomePagesDlg panel("IBM");
    const int answer = Run(panel, [&](QDialog& dialog) {
        auto& url = Control<QLineEdit>(dialog, CSymbolHomePagesDlg::IDC_URL_TEXT);
        const std::string form = std::string(CSymbolHomePagesDlg::kTemplatePrefix) +
                                 CSymbolHomePagesDlg::kTemplateSuffix;
        EXPECT_EQ(form, url.text().toStdString());
        auto& add = Control<QPushButton>(dialog, CSymbolHomePagesDlg::IDC_ADD_BUTTON);
        EXPECT_TRUE(add.isEnabled());
        url.setCursorPosition(static_cast<int>(std::strlen(CSymbolHomePagesDlg::kTemplatePrefix)));
        QTest::keyClicks(&url, "ibm");
        add.click();
        EXPECT_EQ((std::vector<std::string>{"MSFT http://www.msft.com/", "IBM http://www.ibm.com/"}),
                  Rows(Control<QTreeWidget>(dialog, CSymbolHomePagesDlg::IDC_PAGE_LIST)));
        EXPECT_TRUE(url.text().isEmpty());
        EXPECT_TRUE(Grab(dialog, "home-pages"));
        Control<QPushButton>(dialog, 1).click();
    });
    EXPECT_EQ(qvnrt::IDOK, answer);
    EXPECT_EQ("http://www.ibm.com/", Value("HomePages.txt", "HomePages", "IBM"));
}

// The services of the file are listed; a typed service is added to list and file.
TEST_F(QtResearch, SymbolSearchAddsATypedService) {
    CInetSymbolSearchDlg panel;
    const int answer = Run(panel, [&](QDialog& dialog) {
        auto& list = Control<QTreeWidget>(dialog, CInetSymbolSearchDlg::IDC_SERVICE_LIST);
        EXPECT_EQ(2, list.topLevelItemCount());
        auto& add = Control<QPushButton>(dialog, CInetSymbolSearchDlg::IDC_ADD_BUTTON);
        EXPECT_FALSE(add.isEnabled());
        QTest::keyClicks(&Control<QLineEdit>(dialog, CInetSymbolSearchDlg::IDC_NAME_TEXT), "News");
        QTest::keyClicks(&Control<QLineEdit>(dialog, CInetSymbolSearchDlg::IDC_URL_TEXT),
                         "http://example.com/n?s=<SYMBOL>");
        ASSERT_TRUE(add.isEnabled());
        add.click();
        EXPECT_EQ(3, list.topLevelItemCount());
        EXPECT_TRUE(Grab(dialog, "symbol-search"));
        Control<QPushButton>(dialog, 1).click();
    });
    EXPECT_EQ(qvnrt::IDOK, answer);
    EXPECT_EQ("http://example.com/n?s=<SYMBOL>", Value("inetres.txt", "Internet Background Page", "News"));
}

// With a symbol, step two opens with the services that search on a symbol, and the search
// is ready to begin; clearing the symbol takes the ready state away.
TEST_F(QtResearch, SearchInfoFollowsTheChecksAndTexts) {
    CInetResearch research("IBM", nullptr);
    CInetSearchInfoDlg panel(&research);
    panel.m_symbolText = "IBM";
    Run(panel, [&](QDialog& dialog) {
        EXPECT_TRUE(Control<QCheckBox>(dialog, CInetSearchInfoDlg::IDC_SYMBOL_CHECK).isChecked());
        auto& box = Control<QComboBox>(dialog, CInetSearchInfoDlg::IDC_SERVICE_BOX);
        EXPECT_EQ("Quotes", box.currentText().toStdString());
        auto& step = Control<QLabel>(dialog, CInetSearchInfoDlg::IDC_STEP_PICTURE);
        auto& go = Control<QLabel>(dialog, CInetSearchInfoDlg::IDC_GO_PICTURE);
        auto& begin = Control<QPushButton>(dialog, CInetSearchInfoDlg::IDC_BEGIN_BUTTON);
        EXPECT_EQ(CInetSearchInfoDlg::IDB_STEP_TWO_OPEN, step.property("bitmap").toInt());
        EXPECT_EQ(CInetSearchInfoDlg::IDB_READY, go.property("bitmap").toInt());
        EXPECT_TRUE(begin.isEnabled());
        EXPECT_TRUE(Grab(dialog, "internet-research"));

        auto& symbol = Control<QLineEdit>(dialog, CInetSearchInfoDlg::IDC_SYMBOL_TEXT);
        symbol.selectAll();
        QTest::keyClick(&symbol, Qt::Key_Delete);
        EXPECT_EQ(CInetSearchInfoDlg::IDB_NOT_READY, go.property("bitmap").toInt());
        EXPECT_FALSE(begin.isEnabled());
    });
}

}  // namespace
