// story ID --source N: the body of one article, formatted, then exit. Exit status 1 when the
// service does not deliver it.
#include <qvnrt/RTNewsHeadline.h>

#include <cstdio>
#include <memory>

#include "cli/CliSession.h"

namespace qvnrt::cli {
namespace {

constexpr double kAnswerWaitSeconds = 10.0;

struct Options {
    unsigned long id = 0;
    int source = 0;
};

int OnBody(RTNewsHeadline*, unsigned long user) {
    *reinterpret_cast<bool*>(user) = true;
    return 0;
}

// The body with Unix line ends. The headline is not known here, so the body's first line
// (the headline, then a blank line) is empty and left out.
std::string BodyText(const CString& body) {
    std::string text = body.str();
    if (text.rfind("\r\n\r\n", 0) == 0) text.erase(0, 4);
    std::string out;
    for (const char ch : text) {
        if (ch != '\r' && ch != '\0') out += ch;
    }
    return out;
}

int Run(const GlobalOptions& global, const Options& options) {
    CliSession session;
    if (int status = session.Start(global); status != kExitOk) return status;
    RTNewsHeadline headline(options.id, nullptr, static_cast<unsigned char>(options.source),
                            nullptr, 0, 0);
    bool answered = false;
    headline.GetArticleBody(&OnBody, reinterpret_cast<unsigned long>(&answered), 0);
    session.Run(kAnswerWaitSeconds, [&answered] { return answered; });
    headline.CancelBodyRetrieval();
    if (!headline.HasBodyBeenRetrieved()) {
        std::fprintf(stderr, "qvnrt-cli: story %lu: not available from the service\n",
                     options.id);
        return kExitIncomplete;
    }
    const std::string text = BodyText(headline.m_body);
    if (global.format == Format::kTable) {
        std::fputs(text.c_str(), stdout);
        if (text.empty() || text.back() != '\n') std::fputc('\n', stdout);
        std::fflush(stdout);
        return kExitOk;
    }
    OutputSink sink = OutputSink::ToStdout(
        global.format, {{"ID", 10, true, 0, false}, {"SOURCE", 6, true, 0, false},
                        {"STORY", 40, false, 0, true}});
    sink.WriteBatch({{Cell{std::to_string(options.id)}, Cell{std::to_string(options.source)},
                      Cell{text}}});
    return kExitOk;
}

RunCommand Setup(CLI::App& command) {
    auto options = std::make_shared<Options>();
    command.add_option("ID", options->id, "the article's identifier, as news shows it")
        ->required();
    command.add_option("--source", options->source, "the article's source number")
        ->required()
        ->check(CLI::Range(0, 255));
    return [options](const GlobalOptions& global) { return Run(global, *options); };
}

const CommandRegistration kRegistration{"story", "the body of one article, then exit", 55,
                                        Setup};

}  // namespace
}  // namespace qvnrt::cli
