// A UI host for tests: records every message and panel, and answers as told.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include <qvnrt/host.h>

namespace qvnrt::test {

class RecordingUiHost : public UiHost {
public:
    struct Message {
        std::string text;
        std::string caption;
        unsigned style;
        unsigned helpId;
    };

    // Installs itself for its lifetime.
    RecordingUiHost() : m_previous(SetUiHost(this)) {}
    ~RecordingUiHost() override { SetUiHost(m_previous); }

    int MessageBox(const char* text, const char* caption, unsigned style,
                   unsigned helpId) override {
        messages.push_back({text ? text : "", caption ? caption : "", style, helpId});
        return Next(messageAnswers, (style & MB_TYPEMASK) == MB_YESNO ? IDNO : IDOK);
    }
    int RunModal(Panel& panel) override {
        panels.push_back(panel.Title());
        if (onPanel) return onPanel(panel);
        return Next(panelAnswers, IDCANCEL);
    }
    void BeginWaitCursor() override { ++waitCursorDepth, ++waitCursorCount; }
    void EndWaitCursor() override { --waitCursorDepth; }
    bool OpenUrl(const char* url) override {
        urls.push_back(url ? url : "");
        return true;
    }

    std::vector<Message> messages;
    std::vector<std::string> panels;  // titles, in the order shown
    std::vector<std::string> urls;
    std::deque<int> messageAnswers;   // answers to the next message boxes, in order
    std::deque<int> panelAnswers;     // results of the next panels, in order
    std::function<int(Panel&)> onPanel;  // when set, runs each panel instead
    int waitCursorDepth = 0;
    int waitCursorCount = 0;

private:
    static int Next(std::deque<int>& answers, int otherwise) {
        if (answers.empty()) return otherwise;
        const int answer = answers.front();
        answers.pop_front();
        return answer;
    }

    UiHost* m_previous;
};

}  // namespace qvnrt::test
