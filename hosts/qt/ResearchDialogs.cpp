// The three research dialogs: Internet Research (the guided search), Internet Symbol Search
// (the services) and Symbol Home Pages. Their logic names the controls; the layout and the
// labels around them are this host's.
#include <QEvent>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include <qvnrt/CInetSearchInfoDlg.h>
#include <qvnrt/CSymbolAtAGlanceDlg.h>
#include <qvnrt/CInetSymbolSearchDlg.h>
#include <qvnrt/CSymbolHomePagesDlg.h>

#include "NumberedControls.h"
#include "PanelDialogs.h"

namespace qvnrt::qt {

namespace {

QString Qs(const char* text) {
    return QString::fromUtf8(text);
}

class SearchInfoDialog : public NumberedDialog<CInetSearchInfoDlg::View> {
public:
    using Info = CInetSearchInfoDlg;

    SearchInfoDialog(Info& panel, QWidget* parent) : NumberedDialog(parent), m_panel(panel) {
        auto* symbolCheck = Add(Info::IDC_SYMBOL_CHECK, new QCheckBox("Search on the symbol:", this));
        auto* symbol = Add(Info::IDC_SYMBOL_TEXT, new QLineEdit(this));
        auto* homePage = AddButton(Info::IDC_HOME_PAGE_BUTTON,
                                   CSymbolAtAGlanceDlg::Caption(CSymbolAtAGlanceDlg::kHomePageButton));
        auto* extraCheck = Add(Info::IDC_EXTRA_CHECK,
                               new QCheckBox("Search on a company name or other text:", this));
        auto* extra = Add(Info::IDC_EXTRA_TEXT, new QLineEdit(this));
        auto* stepPicture = Add(Info::IDC_STEP_PICTURE, new QLabel(this));
        auto* stepLabel = Add(Info::IDC_STEP_TWO_LABEL, new QLabel("Choose a research service:", this));
        auto* box = Add(Info::IDC_SERVICE_BOX, new QComboBox(this));
        auto* addEdit = AddButton(Info::IDC_ADD_EDIT_BUTTON, Info::kAddEditButton);
        auto* bothCheck = Add(Info::IDC_BOTH_CHECK, new QCheckBox(Qs(Info::kBothCheckText), this));
        auto* goPicture = Add(Info::IDC_GO_PICTURE, new QLabel(this));
        auto* note = Add(Info::IDC_CLOSING_NOTE,
                         new QLabel("The service's page opens in your browser.", this));
        auto* begin = AddButton(Info::IDC_BEGIN_BUTTON, Info::kBeginButton);
        auto* close = AddButton(kOkControl, "Close");
        m_box = std::make_unique<ComboBox>(box);

        auto* grid = new QGridLayout;
        grid->addWidget(symbolCheck, 0, 0);
        grid->addWidget(symbol, 0, 1);
        grid->addWidget(homePage, 0, 2);
        grid->addWidget(extraCheck, 1, 0);
        grid->addWidget(extra, 1, 1, 1, 2);
        auto* step = new QHBoxLayout;
        step->addWidget(stepPicture);
        step->addWidget(stepLabel);
        step->addWidget(box, 1);
        step->addWidget(addEdit);
        auto* go = new QHBoxLayout;
        go->addWidget(goPicture);
        go->addWidget(note, 1);
        go->addWidget(begin);
        go->addWidget(close);
        auto* layout = new QVBoxLayout(this);
        layout->addLayout(grid);
        layout->addLayout(step);
        layout->addWidget(bothCheck);
        layout->addLayout(go);

        m_panel.m_wndPanel.m_hWnd = this;
        m_panel.OnInitDialog(*this);
        for (QCheckBox* check : {symbolCheck, extraCheck, bothCheck}) {
            connect(check, &QCheckBox::clicked, this, [this] { m_panel.OnCheckClicked(); });
        }
        for (QLineEdit* edit : {symbol, extra}) {
            connect(edit, &QLineEdit::textEdited, this, [this] { m_panel.OnTextChanged(); });
        }
        connect(box, &QComboBox::activated, this, [this] { m_panel.OnServiceChanged(); });
        connect(begin, &QPushButton::clicked, this, [this] { m_panel.OnBegin(); });
        connect(homePage, &QPushButton::clicked, this, [this] { m_panel.OnVisitHomePage(); });
        connect(addEdit, &QPushButton::clicked, this, [this] { m_panel.OnAddEdit(); });
        connect(close, &QPushButton::clicked, this, &QDialog::accept);
    }
    ~SearchInfoDialog() override { m_panel.m_wndPanel.m_hWnd = nullptr; }

    qvnrt::ComboBoxView& ServiceBox() override { return *m_box; }

private:
    Info& m_panel;
    std::unique_ptr<ComboBox> m_box;
};

class SymbolSearchDialog : public NumberedDialog<CInetSymbolSearchDlg::View> {
public:
    using Search = CInetSymbolSearchDlg;

    SymbolSearchDialog(Search& panel, QWidget* parent) : NumberedDialog(parent), m_panel(panel) {
        auto* name = Add(Search::IDC_NAME_TEXT, new QLineEdit(this));
        auto* url = Add(Search::IDC_URL_TEXT, new QLineEdit(this));
        auto* list = Add(Search::IDC_SERVICE_LIST, new QTreeWidget(this));
        auto* add = AddButton(Search::IDC_ADD_BUTTON, "Add");
        auto* remove = AddButton(Search::IDC_REMOVE_BUTTON, "Remove");
        auto* close = AddButton(kOkControl, "Close");
        m_list = std::make_unique<TwoColumnList>(list);
        // Add and Remove start off; the logic turns them on.
        for (QPushButton* button : {add, remove}) button->setEnabled(false);

        auto* form = new QFormLayout;
        form->addRow("Service name:", name);
        form->addRow("Search URL:", url);
        auto* note = new QLabel(Qs(Search::kNote) + "\n" + Qs(Search::kSymbolExample) + "\n" +
                                    Qs(Search::kQueryExample),
                                this);
        note->setWordWrap(true);
        auto* buttons = new QHBoxLayout;
        buttons->addWidget(add);
        buttons->addWidget(remove);
        buttons->addStretch(1);
        buttons->addWidget(close);
        auto* layout = new QVBoxLayout(this);
        layout->addLayout(form);
        layout->addWidget(note);
        layout->addWidget(list, 1);
        layout->addLayout(buttons);

        m_panel.OnInitDialog(*this);
        for (QLineEdit* edit : {name, url}) {
            connect(edit, &QLineEdit::textEdited, this, [this] { m_panel.OnTextChanged(); });
        }
        connect(list, &QTreeWidget::itemSelectionChanged, this, [this] { m_panel.OnRowSelected(); });
        connect(add, &QPushButton::clicked, this, [this] { m_panel.OnAdd(); });
        connect(remove, &QPushButton::clicked, this, [this] { m_panel.OnRemove(); });
        connect(close, &QPushButton::clicked, this, [this] {
            if (m_panel.OnOK()) accept();
        });
    }

    qvnrt::ListView& ServiceList() override { return *m_list; }

private:
    Search& m_panel;
    std::unique_ptr<TwoColumnList> m_list;
};

class HomePagesDialog : public NumberedDialog<CSymbolHomePagesDlg::View> {
public:
    using Pages = CSymbolHomePagesDlg;

    HomePagesDialog(Pages& panel, QWidget* parent) : NumberedDialog(parent), m_panel(panel) {
        auto* symbol = Add(Pages::IDC_SYMBOL_TEXT, new QLineEdit(this));
        m_url = Add(Pages::IDC_URL_TEXT, new QLineEdit(this));
        auto* list = Add(Pages::IDC_PAGE_LIST, new QTreeWidget(this));
        auto* add = AddButton(Pages::IDC_ADD_BUTTON, "Add");
        auto* update = AddButton(Pages::IDC_UPDATE_BUTTON, "Update");
        auto* remove = AddButton(Pages::IDC_REMOVE_BUTTON, "Remove");
        auto* ok = AddButton(kOkControl, "OK");
        auto* cancel = AddButton(kCancelControl, "Cancel");
        m_list = std::make_unique<TwoColumnList>(list);
        // Add, Update and Remove start off; the logic turns them on.
        for (QPushButton* button : {add, update, remove}) button->setEnabled(false);

        auto* form = new QFormLayout;
        form->addRow("Symbol:", symbol);
        form->addRow("Home page:", m_url);
        auto* edits = new QHBoxLayout;
        edits->addWidget(add);
        edits->addWidget(update);
        edits->addWidget(remove);
        edits->addStretch(1);
        auto* buttons = new QHBoxLayout;
        buttons->addStretch(1);
        buttons->addWidget(ok);
        buttons->addWidget(cancel);
        auto* layout = new QVBoxLayout(this);
        layout->addLayout(form);
        layout->addLayout(edits);
        layout->addWidget(list, 1);
        layout->addLayout(buttons);

        m_panel.OnInitDialog(*this);
        m_url->installEventFilter(this);
        connect(symbol, &QLineEdit::textEdited, this, [this] { m_panel.OnSymbolChanged(); });
        connect(m_url, &QLineEdit::textEdited, this, [this] { m_panel.OnUrlChanged(); });
        connect(list, &QTreeWidget::itemSelectionChanged, this, [this] { m_panel.OnRowSelected(); });
        connect(add, &QPushButton::clicked, this, [this] { m_panel.OnAdd(); });
        connect(update, &QPushButton::clicked, this, [this] { m_panel.OnUpdate(); });
        connect(remove, &QPushButton::clicked, this, [this] { m_panel.OnRemove(); });
        connect(ok, &QPushButton::clicked, this, [this] {
            if (m_panel.OnOK()) accept();
        });
        connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    }

    qvnrt::ListView& PageList() override { return *m_list; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == m_url && event->type() == QEvent::FocusIn) {
            // After Qt has placed the caret for the focus, so the logic's caret stays.
            QMetaObject::invokeMethod(this, [this] { m_panel.OnUrlFocus(); }, Qt::QueuedConnection);
        }
        return QDialog::eventFilter(watched, event);
    }

private:
    Pages& m_panel;
    QLineEdit* m_url;
    std::unique_ptr<TwoColumnList> m_list;
};

}  // namespace

std::unique_ptr<QDialog> MakeSearchInfoDialog(CInetSearchInfoDlg& panel, QWidget* parent) {
    return std::make_unique<SearchInfoDialog>(panel, parent);
}

std::unique_ptr<QDialog> MakeSymbolSearchDialog(CInetSymbolSearchDlg& panel, QWidget* parent) {
    return std::make_unique<SymbolSearchDialog>(panel, parent);
}

std::unique_ptr<QDialog> MakeHomePagesDialog(CSymbolHomePagesDlg& panel, QWidget* parent) {
    return std::make_unique<HomePagesDialog>(panel, parent);
}

}  // namespace qvnrt::qt
