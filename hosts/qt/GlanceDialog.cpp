// The Symbol At A Glance dialog: the symbol box with the refresh button and the tick arrow
// in the top row, the quote's texts in two columns of label and value, then the research
// row (home page, service box, Goto, Edit) and Close.
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include <array>

#include <qvnrt/CSymbolAtAGlanceDlg.h>

#include "PanelDialogs.h"

namespace qvnrt::qt {

namespace {

using Glance = CSymbolAtAGlanceDlg;

class GlanceDialog : public QDialog, public Glance::View {
public:
    GlanceDialog(Glance& panel, QWidget* parent) : QDialog(parent), m_panel(panel) {
        Build();
        m_panel.m_wndPanel.m_hWnd = this;
        m_panel.OnInitDialog(*this);
        Connect();
    }
    ~GlanceDialog() override { m_panel.m_wndPanel.m_hWnd = nullptr; }

    void SetSymbolText(const char* text) override { m_symbol->setText(QString::fromUtf8(text)); }
    bool GetSymbolText(CString& text) override {
        text = m_symbol->text().toUtf8().constData();
        return true;
    }
    void SetText(Glance::Text which, const char* text) override {
        if (which >= 0 && which < Glance::kTextCount) m_texts[which]->setText(QString::fromUtf8(text));
    }
    bool IsArrowVisible(Glance::Arrow arrow) override { return !m_arrows[arrow]->isHidden(); }
    void ShowArrow(Glance::Arrow arrow, bool visible) override { m_arrows[arrow]->setVisible(visible); }
    void ShowButton(Glance::Button button, bool visible) override {
        m_buttons[button]->setVisible(visible);
    }
    void EnableButton(Glance::Button button, bool enabled) override {
        m_buttons[button]->setEnabled(enabled);
    }
    void SetDefaultButton(Glance::Button button) override {
        for (QPushButton* each : m_buttons) each->setDefault(each == m_buttons[button]);
    }
    void ResetServices() override { m_services->clear(); }
    int AddService(const char* name) override {
        m_services->addItem(QString::fromUtf8(name));
        return m_services->count() - 1;
    }
    int FindService(const char* name) override {
        return m_services->findText(QString::fromUtf8(name), Qt::MatchExactly | Qt::MatchCaseSensitive);
    }
    void SelectService(int index) override {
        const QSignalBlocker quiet(m_services);  // the logic's own choice, not the user's
        m_services->setCurrentIndex(index);
    }
    CString GetSelectedService() override {
        return CString(m_services->currentText().toUtf8().constData());
    }
    void EnableServices(bool enabled) override { m_services->setEnabled(enabled); }

private:
    QLabel* TextLabel(Glance::Text which) {
        auto* label = new QLabel(this);
        label->setObjectName(QStringLiteral("text%1").arg(which));
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        m_texts[which] = label;
        return label;
    }

    QLabel* ArrowLabel(Glance::Arrow arrow, QStyle::StandardPixmap icon) {
        auto* label = new QLabel(this);
        label->setObjectName(arrow == Glance::kUpArrow ? "arrowUp" : "arrowDown");
        label->setFixedWidth(Glance::kArrowBoxWidth);
        label->setPixmap(style()->standardIcon(icon).pixmap(Glance::kArrowBoxWidth));
        label->hide();
        m_arrows[arrow] = label;
        return label;
    }

    QPushButton* Button(Glance::Button which) {
        auto* button = new QPushButton(QString::fromUtf8(Glance::Caption(which)), this);
        button->setObjectName(QString::fromUtf8(Glance::Caption(which)));
        button->setAutoDefault(false);
        m_buttons[which] = button;
        return button;
    }

    void Build() {
        auto* top = new QHBoxLayout;
        top->addWidget(new QLabel(QString::fromUtf8(Glance::kSymbolLabel), this));
        m_symbol = new QLineEdit(this);
        m_symbol->setObjectName("symbol");
        top->addWidget(m_symbol);
        // The refresh and goto buttons are pictures in the panel's artwork.
        Button(Glance::kRefreshButton)->setIcon(style()->standardIcon(QStyle::SP_BrowserReload));
        top->addWidget(m_buttons[Glance::kRefreshButton]);
        top->addSpacing(12);
        top->addWidget(ArrowLabel(Glance::kUpArrow, QStyle::SP_ArrowUp));
        top->addWidget(ArrowLabel(Glance::kDownArrow, QStyle::SP_ArrowDown));
        top->addWidget(new QLabel(QString::fromUtf8(Glance::Label(Glance::kExchange)), this));
        top->addWidget(TextLabel(Glance::kExchange), 1);

        auto* grid = new QGridLayout;
        grid->addWidget(new QLabel(QString::fromUtf8(Glance::Label(Glance::kDescription)), this), 0, 0);
        grid->addWidget(TextLabel(Glance::kDescription), 0, 1, 1, 3);
        int row = 1, column = 0;
        for (int each = Glance::kLast; each < Glance::kTextCount; ++each) {
            const auto which = static_cast<Glance::Text>(each);
            grid->addWidget(new QLabel(QString::fromUtf8(Glance::Label(which)), this), row, column);
            grid->addWidget(TextLabel(which), row, column + 1);
            column = column == 0 ? 2 : 0;
            if (column == 0) ++row;
        }
        grid->setColumnStretch(1, 1);
        grid->setColumnStretch(3, 1);

        auto* research = new QHBoxLayout;
        research->addWidget(Button(Glance::kHomePageButton));
        m_services = new QComboBox(this);
        m_services->setObjectName("services");
        research->addWidget(m_services, 1);
        Button(Glance::kGotoButton)->setIcon(style()->standardIcon(QStyle::SP_ArrowForward));
        research->addWidget(m_buttons[Glance::kGotoButton]);
        research->addWidget(Button(Glance::kEditButton));

        auto* bottom = new QHBoxLayout;
        bottom->addStretch(1);
        bottom->addWidget(Button(Glance::kCloseButton));

        auto* layout = new QVBoxLayout(this);
        layout->addLayout(top);
        layout->addLayout(grid);
        layout->addLayout(research);
        layout->addLayout(bottom);
    }

    void Connect() {
        connect(m_symbol, &QLineEdit::textEdited, this, [this] { m_panel.OnSymbolChanged(); });
        connect(m_symbol, &QLineEdit::returnPressed, this, [this] {
            if (m_buttons[Glance::kRefreshButton]->isVisible()) m_panel.OnRefresh();
        });
        connect(m_buttons[Glance::kRefreshButton], &QPushButton::clicked, this, [this] { m_panel.OnRefresh(); });
        connect(m_buttons[Glance::kCloseButton], &QPushButton::clicked, this, [this] {
            m_panel.OnOK();
            accept();
        });
        connect(m_buttons[Glance::kHomePageButton], &QPushButton::clicked, this, [this] { m_panel.OnVisitHomePage(); });
        connect(m_buttons[Glance::kGotoButton], &QPushButton::clicked, this, [this] { m_panel.OnGoto(); });
        connect(m_buttons[Glance::kEditButton], &QPushButton::clicked, this, [this] { m_panel.OnEditServices(); });
        connect(m_services, &QComboBox::activated, this, [this] { m_panel.OnServiceChanged(); });
    }

    Glance& m_panel;
    QLineEdit* m_symbol = nullptr;
    QComboBox* m_services = nullptr;
    std::array<QLabel*, Glance::kTextCount> m_texts{};
    std::array<QLabel*, 2> m_arrows{};
    std::array<QPushButton*, 5> m_buttons{};
};

}  // namespace

std::unique_ptr<QDialog> MakeGlanceDialog(CSymbolAtAGlanceDlg& panel, QWidget* parent) {
    return std::make_unique<GlanceDialog>(panel, parent);
}

}  // namespace qvnrt::qt
