#include "platform/UiHost.h"

#include <gtest/gtest.h>

#include "support/RecordingUiHost.h"

namespace qvnrt {
namespace {

class SomePanel : public Panel {
public:
    const char* Title() const override { return "Some panel"; }
};

TEST(HeadlessUiHost, AnswersWithoutAskingAndWritesTheTextToStandardError) {
    UiHost& host = platform::HeadlessUiHost();
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(IDOK, host.MessageBox("Map file not found.", "QvnRT", MB_OK | MB_ICONWARNING, 0));
    EXPECT_EQ(IDNO, host.MessageBox("Enter one now?", "QvnRT", MB_YESNO | MB_ICONQUESTION, 0));
    EXPECT_EQ(IDNO, host.MessageBox("Save?", nullptr, MB_YESNOCANCEL, 0));
    EXPECT_EQ(IDOK, host.MessageBox(nullptr, nullptr, MB_OKCANCEL, 0));
    const std::string written = ::testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, written.find("QvnRT: Map file not found.\n"));
    EXPECT_NE(std::string::npos, written.find("QvnRT: Save?\n"));

    SomePanel panel;
    EXPECT_EQ(IDCANCEL, host.RunModal(panel));
    EXPECT_FALSE(host.OpenUrl(nullptr));
    EXPECT_FALSE(host.OpenUrl(""));
}

TEST(UiHost, InstalledHostReceivesMessagesUntilRemoved) {
    EXPECT_EQ(&platform::HeadlessUiHost(), &GetUiHost());
    {
        test::RecordingUiHost recording;
        EXPECT_EQ(&recording, &GetUiHost());
        recording.messageAnswers.push_back(IDYES);
        EXPECT_EQ(IDYES, platform::ShowMessageBox("Text", MB_YESNO, 0x30));
        ASSERT_EQ(1u, recording.messages.size());
        EXPECT_EQ("Text", recording.messages[0].text);
        EXPECT_EQ(platform::kDefaultCaption, recording.messages[0].caption);
        EXPECT_EQ(MB_YESNO, recording.messages[0].style);
        EXPECT_EQ(0x30u, recording.messages[0].helpId);
        {
            platform::WaitCursor busy;
            EXPECT_EQ(1, recording.waitCursorDepth);
        }
        EXPECT_EQ(0, recording.waitCursorDepth);
    }
    EXPECT_EQ(&platform::HeadlessUiHost(), &GetUiHost());
    EXPECT_EQ(nullptr, SetUiHost(nullptr));
}

}  // namespace
}  // namespace qvnrt
