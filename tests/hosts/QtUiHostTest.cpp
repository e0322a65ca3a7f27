#include <qvnrt/qt/QtUiHost.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

#include <string>

#include <qvnrt/CDoubleToFractRep.h>
#include <qvnrt/CNewsUnavailableDlg.h>
#include <qvnrt/CSymbolAtAGlanceDlg.h>
#include <qvnrt/qt/QtMainLoop.h>

#include "QtTestApp.h"
#include "support/FakeSession.h"

namespace {

// Saves what the dialog shows as build/qt-shots/<name>.png, for a person to look at; true
// when the picture was written.
bool Grab(QWidget& widget, const char* name) {
    const char* root = std::getenv("QVNRT_TEST_BINARY_DIR");
    const QString dir = QString::fromUtf8(root ? root : ".") + "/qt-shots";
    QDir().mkpath(dir);
    const QPixmap picture = widget.grab();
    return !picture.isNull() && picture.save(dir + "/" + name + ".png");
}

std::string Shown(QWidget& dialog, const QString& objectName) {
    auto* label = dialog.findChild<QLabel*>(objectName);
    return label ? label->text().toStdString() : "<missing " + objectName.toStdString() + ">";
}

class QtHost : public ::testing::Test {
protected:
    void SetUp() override {
        qvnrt::test::TestApp();
        qvnrt::SetMainLoop(&loop);
        qvnrt::SetUiHost(&host);
    }
    void TearDown() override {
        qvnrt::SetUiHost(nullptr);
        qvnrt::SetMainLoop(nullptr);
    }

    qvnrt::QtMainLoop loop;
    qvnrt::QtUiHost host;
};

struct BoxCase {
    unsigned style;
    QMessageBox::StandardButton pressed;
    int answer;
};

class QtMessageBox : public QtHost, public ::testing::WithParamInterface<BoxCase> {};

TEST_P(QtMessageBox, AnswersTheButtonPressed) {
    const BoxCase c = GetParam();
    bool pressed = false;
    QTimer::singleShot(0, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->button(c.pressed)) return box ? box->reject() : void();
        pressed = true;
        box->button(c.pressed)->click();
    });
    EXPECT_EQ(c.answer, host.MessageBox("text", "caption", c.style, 0));
    EXPECT_TRUE(pressed) << "the box lacks the button";
}

INSTANTIATE_TEST_SUITE_P(
    Styles, QtMessageBox,
    ::testing::Values(BoxCase{qvnrt::MB_OK, QMessageBox::Ok, qvnrt::IDOK},
                      BoxCase{qvnrt::MB_OKCANCEL | qvnrt::MB_ICONWARNING, QMessageBox::Cancel, qvnrt::IDCANCEL},
                      BoxCase{qvnrt::MB_YESNO | qvnrt::MB_ICONQUESTION, QMessageBox::Yes, qvnrt::IDYES},
                      BoxCase{qvnrt::MB_YESNO | qvnrt::MB_ICONINFORMATION, QMessageBox::No, qvnrt::IDNO},
                      BoxCase{qvnrt::MB_YESNOCANCEL | qvnrt::MB_ICONERROR, QMessageBox::Cancel, qvnrt::IDCANCEL}));

// The glance dialog shows the logic's texts as a quote arrives, with the up arrow after a
// rise; Close ends it with IDOK.
TEST_F(QtHost, GlanceShowsAScriptedQuote) {
    qvnrt::test::FakeSession session;
    qvnrt::SetUiHost(&host);  // the session installs its recording host
    ASSERT_TRUE(session.Connect());
    CSymbolAtAGlanceDlg panel("IBM");
    bool checked = false;
    host.SetPanelShownHook([&](QDialog& dialog, qvnrt::Panel&) {
        const auto request = session.fake.last("clientReqSecurities").result;
        session.fake.fireSecurityText(request, RTFIELD_SYMBOL, "IBM");
        session.fake.fireSecurityText(request, RTFIELD_NAME, "Intl Machines");
        session.fake.fireSecurityFloat(request, RTFIELD_PREV_CLOSE, 100.0f);
        session.fake.fireSecurityDouble(request, RTFIELD_LAST, 101.5);
        session.fake.fireSecurityInt(request, RTFIELD_TICK, 1);  // an up tick
        session.fake.fireSecurityEnd(request);
        const std::string last = CDoubleToFractRep(&panel).ToString(101.5);
        EXPECT_EQ(last, Shown(dialog, QString("text%1").arg(CSymbolAtAGlanceDlg::kLast)));
        EXPECT_EQ("Intl Machines", Shown(dialog, QString("text%1").arg(CSymbolAtAGlanceDlg::kDescription)));
        EXPECT_EQ(CSymbolAtAGlanceDlg::kNoValue, Shown(dialog, QString("text%1").arg(CSymbolAtAGlanceDlg::kBid)));
        EXPECT_FALSE(dialog.findChild<QLabel*>("arrowUp")->isHidden());
        EXPECT_TRUE(dialog.findChild<QLabel*>("arrowDown")->isHidden());
        EXPECT_TRUE(Grab(dialog, "glance"));
        checked = true;
        dialog.findChild<QPushButton*>(CSymbolAtAGlanceDlg::Caption(CSymbolAtAGlanceDlg::kCloseButton))->click();
    });
    EXPECT_EQ(qvnrt::IDOK, host.RunModal(panel));
    EXPECT_TRUE(checked);
}

// The symbols arrive as one text and show as sorted rows under the message.
TEST_F(QtHost, NewsUnavailableListsTheFailedSymbols) {
    CNewsUnavailableDlg panel;
    panel.m_strMessage = "News could not be started for every symbol.";
    panel.m_strSymbols = "MSFT IBM AAPL ";
    std::vector<std::string> rows;
    std::string message;
    host.SetPanelShownHook([&](QDialog& dialog, qvnrt::Panel&) {
        auto* list = dialog.findChild<QListWidget*>("list");
        for (int row = 0; list && row < list->count(); ++row) rows.push_back(list->item(row)->text().toStdString());
        message = Shown(dialog, QString("control%1").arg(CNewsUnavailableDlg::IDC_MESSAGE));
        EXPECT_TRUE(Grab(dialog, "news-unavailable"));
        dialog.accept();
    });
    EXPECT_EQ(qvnrt::IDOK, host.RunModal(panel));
    EXPECT_EQ((std::vector<std::string>{"AAPL", "IBM", "MSFT"}), rows);
    EXPECT_EQ(panel.m_strMessage.operator const char*(), message);
}

// A box opened while a panel is shown belongs to the panel, so it cannot fall behind it.
TEST_F(QtHost, BoxFromAPanelBelongsToThePanel) {
    CNewsUnavailableDlg panel;
    QWidget* panelWindow = nullptr;
    QWidget* boxOwner = nullptr;
    host.SetPanelShownHook([&](QDialog& dialog, qvnrt::Panel&) {
        panelWindow = &dialog;
        QTimer::singleShot(0, [&] {
            QWidget* box = QApplication::activeModalWidget();
            boxOwner = box ? box->parentWidget() : nullptr;
            if (box) box->close();
        });
        host.MessageBox("text", "caption", qvnrt::MB_OK, 0);
        dialog.accept();
    });
    host.RunModal(panel);
    ASSERT_NE(nullptr, panelWindow);
    EXPECT_EQ(panelWindow, boxOwner);
}

TEST_F(QtHost, UnknownPanelIsCancelled) {
    struct Other : qvnrt::Panel {
        const char* Title() const override { return "other"; }
    } other;
    EXPECT_EQ(qvnrt::IDCANCEL, host.RunModal(other));
}

}  // namespace
