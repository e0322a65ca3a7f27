// The terminal's view of the Symbol At A Glance panel: the panel's logic (the library's
// CSymbolAtAGlanceDlg) drives it exactly as a window would be driven, and it draws the
// panel's texts on the terminal and turns keys into the panel's actions.
//
// Keys: typing starts a new symbol (or '/' starts an empty one), Backspace edits it, Enter
// refreshes, Esc abandons the edit; Tab and the arrow keys choose a research service,
// Ctrl-G opens it ("Goto..."), Ctrl-P visits the corporate home page, Ctrl-E edits the
// services; q (outside an edit) or Ctrl-C quits.
#pragma once

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include <qvnrt/CSymbolAtAGlanceDlg.h>
#include <qvnrt/host.h>

#include "cli/Table.h"

namespace qvnrt::cli {

class GlanceScreen : public CSymbolAtAGlanceDlg::View {
public:
    using Panel = CSymbolAtAGlanceDlg;

    // `interactive`: draw in place on `out` and read keys from standard input (a terminal).
    // Otherwise nothing is drawn, and Rows() gives the panel for an output sink.
    GlanceScreen(Panel& panel, std::FILE* out, bool interactive, bool colour);
    ~GlanceScreen() override;
    GlanceScreen(const GlanceScreen&) = delete;
    GlanceScreen& operator=(const GlanceScreen&) = delete;

    // Starts the panel (OnInitDialog), the redraws and the keyboard.
    void Start();
    // True once the user asked to quit.
    bool Done() const { return m_done; }
    // True once the panel has shown a quote (a change text is always written then).
    bool Quoted() const;
    // Draws the panel now.
    void Draw();

    // The panel as rows of a label and a value, for a pipe: the symbol, then every text.
    static std::vector<Column> Columns();
    std::vector<Row> Rows() const;

    // ---- The view ----
    void SetSymbolText(const char* text) override;
    bool GetSymbolText(CString& text) override;
    void SetText(Panel::Text which, const char* text) override;
    bool IsArrowVisible(Panel::Arrow arrow) override;
    void ShowArrow(Panel::Arrow arrow, bool visible) override;
    void ShowButton(Panel::Button button, bool visible) override;
    void EnableButton(Panel::Button button, bool enabled) override;
    void SetDefaultButton(Panel::Button button) override;
    void ResetServices() override;
    int AddService(const char* name) override;
    int FindService(const char* name) override;
    void SelectService(int index) override;
    CString GetSelectedService() override;
    void EnableServices(bool enabled) override;

private:
    void OnInput();
    void OnKey(const std::string& key);
    void Type(char c);
    void MoveService(int step);
    bool Usable(Panel::Button button) const;
    std::string Colored(const std::string& text, bool up) const;
    std::vector<std::string> Lines() const;
    std::string TextOf(Panel::Text which) const;

    Panel& m_panel;
    std::FILE* m_out;
    bool m_interactive;
    bool m_colour;
    bool m_unicode;
    bool m_done = false;
    bool m_dirty = true;
    bool m_editing = false;
    MainLoop::TimerId m_redraw = 0;
    bool m_watchingInput = false;

    std::string m_symbolBox;
    std::map<Panel::Text, std::string> m_texts;
    bool m_arrows[2] = {false, false};
    std::map<Panel::Button, bool> m_shown;
    std::map<Panel::Button, bool> m_enabled;
    Panel::Button m_default = Panel::kCloseButton;
    std::vector<std::string> m_services;
    int m_selected = -1;
    bool m_servicesEnabled = false;
};

}  // namespace qvnrt::cli
