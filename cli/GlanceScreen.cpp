#include "cli/GlanceScreen.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "cli/Terminal.h"

namespace qvnrt::cli {
namespace {

constexpr unsigned kRedrawMs = 150;  // often enough to look live, rarely enough to be cheap
constexpr int kValueWidth = 24;

constexpr char kCtrlE = 5, kCtrlG = 7, kCtrlP = 16, kTab = '\t', kEscape = 27;
constexpr char kBackspace = 127, kCtrlH = 8;

// The texts in two columns, row by row; kTextCount leaves a cell empty.
constexpr std::pair<CSymbolAtAGlanceDlg::Text, CSymbolAtAGlanceDlg::Text> kRows[] = {
    {CSymbolAtAGlanceDlg::kLast, CSymbolAtAGlanceDlg::kChange},
    {CSymbolAtAGlanceDlg::kPercent, CSymbolAtAGlanceDlg::kTime},
    {CSymbolAtAGlanceDlg::kBid, CSymbolAtAGlanceDlg::kAsk},
    {CSymbolAtAGlanceDlg::kBidSize, CSymbolAtAGlanceDlg::kAskSize},
    {CSymbolAtAGlanceDlg::kBidExchange, CSymbolAtAGlanceDlg::kAskExchange},
    {CSymbolAtAGlanceDlg::kHigh, CSymbolAtAGlanceDlg::kLow},
    {CSymbolAtAGlanceDlg::kPrevious, CSymbolAtAGlanceDlg::kVolume},
    {CSymbolAtAGlanceDlg::k52WeekHigh, CSymbolAtAGlanceDlg::k52WeekLow},
    {CSymbolAtAGlanceDlg::kEPS, CSymbolAtAGlanceDlg::kTotalVolume},
    {CSymbolAtAGlanceDlg::kPERatio, CSymbolAtAGlanceDlg::kTextCount},
};

bool LocaleIsUtf8() {
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* value = std::getenv(name);
        if (!value || !*value) continue;
        std::string text(value);
        std::transform(text.begin(), text.end(), text.begin(), ::toupper);
        return text.find("UTF-8") != std::string::npos || text.find("UTF8") != std::string::npos;
    }
    return false;
}

std::string LabelledValue(const char* label, const std::string& value) {
    std::string cell = std::string(label) + " " + value;
    if (cell.size() < kValueWidth + 14) cell.resize(kValueWidth + 14, ' ');
    return cell;
}

bool IsSymbolCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || std::strchr(".$@^#-_/=", c);
}

}  // namespace

GlanceScreen::GlanceScreen(Panel& panel, std::FILE* out, bool interactive, bool colour)
    : m_panel(panel),
      m_out(out),
      m_interactive(interactive),
      m_colour(interactive && colour),
      m_unicode(LocaleIsUtf8()) {}

GlanceScreen::~GlanceScreen() {
    MainLoop& loop = GetMainLoop();
    if (m_redraw) loop.removeTimer(m_redraw);
    if (m_watchingInput) loop.unwatchFd(STDIN_FILENO);
}

void GlanceScreen::Start() {
    m_panel.OnInitDialog(*this);
    if (!m_interactive) return;
    MainLoop& loop = GetMainLoop();
    m_redraw = loop.addTimer(kRedrawMs, [this] {
        if (m_dirty) Draw();
    });
    // The command puts the terminal into key-by-key input (KeyInput) for the run.
    loop.watchFd(STDIN_FILENO, [this] { OnInput(); });
    m_watchingInput = true;
    Draw();
}

// ---- Keys ---------------------------------------------------------------------------------

void GlanceScreen::OnInput() {
    char buffer[64];
    const ssize_t got = ::read(STDIN_FILENO, buffer, sizeof(buffer));
    if (got <= 0) {  // the input has ended: only Ctrl-C is left to quit
        GetMainLoop().unwatchFd(STDIN_FILENO);
        m_watchingInput = false;
        return;
    }
    // An escape sequence (an arrow key) comes in one read; anything else is key by key.
    const std::string input(buffer, static_cast<size_t>(got));
    if (input.size() >= 3 && input[0] == kEscape && input[1] == '[') {
        OnKey(input);
    } else {
        for (char c : input) OnKey(std::string(1, c));
    }
    if (m_dirty) Draw();
}

void GlanceScreen::OnKey(const std::string& key) {
    if (key == "\x1b[A") return MoveService(-1);
    if (key == "\x1b[B") return MoveService(1);
    if (key.size() != 1) return;
    const char c = key[0];
    switch (c) {
        case kTab:
            return MoveService(1);
        case kCtrlG:
            if (Usable(Panel::kGotoButton)) m_panel.OnGoto();
            return;
        case kCtrlP:
            m_panel.OnVisitHomePage();
            return;
        case kCtrlE:
            if (Usable(Panel::kEditButton)) m_panel.OnEditServices();
            return;
        case '\r':
        case '\n':
            // Enter presses the default button; only Refresh does something here, since
            // Close is what q is for.
            if (m_default == Panel::kRefreshButton && Usable(Panel::kRefreshButton)) {
                m_editing = false;
                m_panel.OnRefresh();
            }
            return;
        case kEscape:
            if (m_editing) {
                m_editing = false;
                m_symbolBox = m_panel.m_strSymbolBox.str();
                m_shown[Panel::kRefreshButton] = false;
                m_default = Panel::kCloseButton;
                m_dirty = true;
            }
            return;
        case kBackspace:
        case kCtrlH:
            if (m_editing && !m_symbolBox.empty()) {
                m_symbolBox.pop_back();
                m_panel.OnSymbolChanged();
                m_dirty = true;
            }
            return;
        default:
            break;
    }
    if (!m_editing && c == 'q') {
        m_done = true;
        return;
    }
    if (!IsSymbolCharacter(c)) return;
    if (!m_editing) {  // the first key replaces the symbol, as typing over a selection does
        m_editing = true;
        m_symbolBox.clear();
        if (c == '/') {
            m_panel.OnSymbolChanged();
            m_dirty = true;
            return;
        }
    }
    Type(c);
}

void GlanceScreen::Type(char c) {
    m_symbolBox.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(c))));
    m_panel.OnSymbolChanged();
    m_dirty = true;
}

void GlanceScreen::MoveService(int step) {
    if (!m_servicesEnabled || m_services.empty()) return;
    const int count = static_cast<int>(m_services.size());
    m_selected = ((m_selected < 0 ? 0 : m_selected) + step + count) % count;
    m_panel.OnServiceChanged();
    m_dirty = true;
}

bool GlanceScreen::Usable(Panel::Button button) const {
    const auto shown = m_shown.find(button);
    const auto enabled = m_enabled.find(button);
    return (shown == m_shown.end() || shown->second) &&
           (enabled == m_enabled.end() || enabled->second);
}

// ---- Drawing ------------------------------------------------------------------------------

std::string GlanceScreen::Colored(const std::string& text, bool up) const {
    if (!m_colour) return text;
    return (up ? "\x1b[32m" : "\x1b[31m") + text + "\x1b[0m";
}

std::string GlanceScreen::TextOf(Panel::Text which) const {
    const auto found = m_texts.find(which);
    return found == m_texts.end() ? std::string(Panel::kNoValue) : found->second;
}

bool GlanceScreen::Quoted() const {
    return TextOf(Panel::kChange) != Panel::kNoValue;
}

std::vector<Column> GlanceScreen::Columns() {
    return {Column{"FIELD", 14}, Column{"VALUE", 24, false, 0, true}};
}

std::vector<Row> GlanceScreen::Rows() const {
    // The label without its colon names the field.
    const auto field = [](const char* label) {
        std::string name(label);
        if (!name.empty() && name.back() == ':') name.pop_back();
        return Cell{name};
    };
    std::vector<Row> rows;
    rows.push_back({field(Panel::kSymbolLabel), Cell{m_symbolBox}});
    for (int text = 0; text < Panel::kTextCount; ++text) {
        const auto which = static_cast<Panel::Text>(text);
        const std::string value = TextOf(which);
        Cell cell{value};
        if (which == Panel::kChange && value != Panel::kNoValue)
            cell.move = value[0] == '+' ? 1 : -1;
        if (value == Panel::kNoValue) cell.text.reset();  // a value never delivered
        rows.push_back({field(Panel::Label(which)), cell});
    }
    return rows;
}

std::vector<std::string> GlanceScreen::Lines() const {
    const auto text = [this](Panel::Text which) { return TextOf(which); };
    std::vector<std::string> lines;
    lines.push_back(Panel::kTitle);
    std::string arrow = " ";
    if (m_arrows[Panel::kUpArrow]) {
        arrow = Colored(m_unicode ? "\u25B2" : Panel::kUpArrowLetter, true);
    } else if (m_arrows[Panel::kDownArrow]) {
        arrow = Colored(m_unicode ? "\u25BC" : Panel::kDownArrowLetter, false);
    }
    std::string symbol = m_symbolBox + (m_editing ? "_" : "");
    lines.push_back(LabelledValue(Panel::kSymbolLabel, symbol) + arrow + " " +
                    Panel::Label(Panel::kExchange) + " " + text(Panel::kExchange));
    lines.push_back(std::string(Panel::Label(Panel::kDescription)) + " " +
                    text(Panel::kDescription));
    for (const auto& [left, right] : kRows) {
        std::string value = text(left);
        std::string line = LabelledValue(Panel::Label(left), value);
        if (right != Panel::kTextCount) {
            std::string rightValue = text(right);
            if (right == Panel::kChange && rightValue != Panel::kNoValue) {
                rightValue = Colored(rightValue, rightValue[0] == '+');
            }
            line += std::string(Panel::Label(right)) + " " + rightValue;
        }
        lines.push_back(line);
    }
    std::string services = "Research:";
    for (size_t i = 0; i < m_services.size(); ++i) {
        const bool chosen = static_cast<int>(i) == m_selected;
        services += chosen ? " [" + m_services[i] + "]" : "  " + m_services[i] + " ";
    }
    lines.push_back(services);
    if (m_interactive) {
        std::string keys = "Enter: Refresh  ";
        if (Usable(Panel::kGotoButton)) {
            keys +=
                "Tab: next service  Ctrl-G: " + std::string(Panel::Caption(Panel::kGotoButton)) +
                "  Ctrl-E: " + Panel::Caption(Panel::kEditButton) + "  ";
        }
        keys += "Ctrl-P: " + std::string(Panel::Caption(Panel::kHomePageButton)) + "  q: quit";
        lines.push_back("");
        lines.push_back("Type a symbol to change it.  " + keys);
    }
    return lines;
}

void GlanceScreen::Draw() {
    m_dirty = false;
    if (!m_interactive) return;
    const std::vector<std::string> lines = Lines();
    const size_t width = static_cast<size_t>(TerminalWidth(m_out));
    std::string screen = "\x1b[H\x1b[2J";
    for (const std::string& line : lines) {
        // Lines with colour codes are short of the width in any case.
        screen += (line.find('\x1b') == std::string::npos && line.size() > width)
                      ? line.substr(0, width)
                      : line;
        screen += "\r\n";
    }
    std::fputs(screen.c_str(), m_out);
    std::fflush(m_out);
}

// ---- The view -----------------------------------------------------------------------------

void GlanceScreen::SetSymbolText(const char* text) {
    if (m_editing) return;  // the user's typing is not overwritten by a quote
    m_symbolBox = text ? text : "";
    m_dirty = true;
}

bool GlanceScreen::GetSymbolText(CString& text) {
    text = m_symbolBox.c_str();
    return true;
}

void GlanceScreen::SetText(Panel::Text which, const char* text) {
    m_texts[which] = text ? text : "";
    m_dirty = true;
}

bool GlanceScreen::IsArrowVisible(Panel::Arrow arrow) {
    return m_arrows[arrow];
}

void GlanceScreen::ShowArrow(Panel::Arrow arrow, bool visible) {
    m_arrows[arrow] = visible;
    m_dirty = true;
}

void GlanceScreen::ShowButton(Panel::Button button, bool visible) {
    m_shown[button] = visible;
    m_dirty = true;
}

void GlanceScreen::EnableButton(Panel::Button button, bool enabled) {
    m_enabled[button] = enabled;
    m_dirty = true;
}

void GlanceScreen::SetDefaultButton(Panel::Button button) {
    m_default = button;
}

void GlanceScreen::ResetServices() {
    m_services.clear();
    m_selected = -1;
    m_dirty = true;
}

int GlanceScreen::AddService(const char* name) {
    m_services.emplace_back(name ? name : "");
    m_dirty = true;
    return static_cast<int>(m_services.size()) - 1;
}

int GlanceScreen::FindService(const char* name) {
    const auto found = std::find(m_services.begin(), m_services.end(), name ? name : "");
    return found == m_services.end() ? -1 : static_cast<int>(found - m_services.begin());
}

void GlanceScreen::SelectService(int index) {
    m_selected = index;
    m_dirty = true;
}

CString GlanceScreen::GetSelectedService() {
    return m_selected >= 0 && m_selected < static_cast<int>(m_services.size())
               ? CString(m_services[m_selected].c_str())
               : CString();
}

void GlanceScreen::EnableServices(bool enabled) {
    m_servicesEnabled = enabled;
    m_dirty = true;
}

}  // namespace qvnrt::cli
