// desk: a watch list with live quotes, a candlestick chart of the selected symbol and its
// news, on the Qt host of the library. Against the simulation driver by default.
//
//   desk [--driver PATH] [--width MINUTES] [SYMBOL...]
//   desk --exit-after-bars N [--timeout SECONDS] ...   ends once the chart has N bars
//                                                       (status 0), or at the timeout (1)
//   desk --grab FILE ...                                saves the window as a picture at the end
//   desk --list-bars ...                                prints the chart's bars at the end
#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QTimer>

#include <cstdio>

#include <qvnrt/qt/QtMainLoop.h>
#include <qvnrt/qt/QtUiHost.h>
#include <qvnrt/qvnrt.h>

#include "DeskWindow.h"

namespace {

// The chart's bars as their seconds into the day in the security's zone, with the session
// rules that cut them, so that a script can check their alignment without knowing the market.
void ListBars(const QuoteFeed& feed) {
    std::printf("history %zu live %zu width %d\n", feed.historyBars(), feed.liveBars(),
                feed.barSeconds());
    const SESSION_INFO& rules = feed.sessionRules();
    // Session times are hour and minute in one word: 0x091E is 9:30.
    const auto seconds = [](int16_t time) { return (time >> 8) * 3600 + (time & 0xFF) * 60; };
    for (int session = 0; session < 4; ++session) {
        if (rules.size != 0 && rules.bSession[session]) {
            std::printf("session %d %d\n", seconds(rules.sStartTime[session]),
                        seconds(rules.sEndTime[session]));
        }
    }
    for (const Bar& bar : feed.bars()) {
        const Date stamp(bar.stamp);
        const uint8_t zone = rules.chTimeZone;
        std::printf("bar %u\n", stamp.getHour(zone) * 3600 + stamp.getMinute(zone) * 60 +
                                     stamp.getSecond(zone));
    }
}

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription("Live quotes, bars and news on QvnRT");
    parser.addHelpOption();
    parser.addPositionalArgument("symbols", "Symbols of the watch list", "[SYMBOL...]");
    const QCommandLineOption driverOption("driver", "The driver plugin to load", "path");
    const QCommandLineOption widthOption("width", "Minutes per bar of the chart", "minutes", "5");
    const QCommandLineOption exitOption("exit-after-bars", "End once the chart has N bars", "n");
    const QCommandLineOption timeoutOption("timeout", "With --exit-after-bars: give up after", "seconds", "30");
    const QCommandLineOption grabOption("grab", "Save the window as a picture on leaving", "file");
    const QCommandLineOption listOption("list-bars", "Print the chart's bars on leaving");
    parser.addOptions({driverOption, widthOption, exitOption, timeoutOption, grabOption, listOption});
    parser.process(app);

    bool ok = false;
    const int width = parser.value(widthOption).toInt(&ok);
    if (!ok || width < 1 || width > 24 * 60) {
        std::fprintf(stderr, "desk: --width takes 1 to 1440 minutes\n");
        return 2;
    }
    std::vector<std::string> symbols;
    for (const QString& symbol : parser.positionalArguments()) symbols.push_back(symbol.toStdString());
    if (symbols.empty()) symbols = {"ACME", "GLXS", "EURUSD", "UST10Y", "$USX"};

    // The loop and the host go in before the driver loads: its descriptor and the cache
    // timer go onto the loop that is installed then.
    qvnrt::QtMainLoop loop;
    qvnrt::SetMainLoop(&loop);
    DeskWindow window(symbols, width);
    qvnrt::QtUiHost ui(&window);
    qvnrt::SetUiHost(&ui);

    QString driver = parser.value(driverOption);
#ifdef DESK_DEFAULT_DRIVER
    if (driver.isEmpty()) driver = DESK_DEFAULT_DRIVER;
#endif
    int status = 0;
    if (!driver.isEmpty() && !RTServer::SetDLLName(driver.toUtf8().constData())) {
        std::fprintf(stderr, "desk: driver name too long\n");
        status = 2;
    } else if (!LoadRTServer(0, 0)) {
        std::fprintf(stderr, "desk: no driver could be loaded: %s\n", qvnrt::LastDriverLoadError());
        status = 2;
    } else if (RTServer::Connect("", "", 0, 0, 1) != 0) {
        std::fprintf(stderr, "desk: the driver refused to connect\n");
        status = 2;
    } else if (!window.Start()) {
        std::fprintf(stderr, "desk: the service opened none of the symbols\n");
        status = 1;
    }

    if (status == 0) {
        window.show();
        QTimer watch;
        if (parser.isSet(exitOption)) {
            const size_t wanted = parser.value(exitOption).toUInt();
            const int timeoutMs = parser.value(timeoutOption).toInt() * 1000;
            QElapsedTimer elapsed;
            elapsed.start();
            // By value: this block ends before the loop runs.
            QObject::connect(&watch, &QTimer::timeout, [&app, &window, wanted, timeoutMs, elapsed] {
                // History first: the count then says what the driver and cache delivered.
                const QuoteFeed* feed = window.ChartFeed();
                if (feed && feed->historyDone() && window.ChartBars() >= wanted) {
                    std::printf("bars %s %zu\n", window.ChartSymbol().c_str(), window.ChartBars());
                    app.exit(0);
                } else if (elapsed.elapsed() > timeoutMs) {
                    std::fprintf(stderr, "desk: %zu of %zu bars after the timeout\n", window.ChartBars(), wanted);
                    app.exit(1);
                }
            });
            watch.start(100);
        }
        status = app.exec();
        if (parser.isSet(grabOption) && !window.grab().save(parser.value(grabOption))) {
            std::fprintf(stderr, "desk: could not save %s\n", qPrintable(parser.value(grabOption)));
        }
        if (parser.isSet(listOption) && window.ChartFeed()) ListBars(*window.ChartFeed());
    }
    window.Stop();
    RTServer::CloseServer();
    qvnrt::SetUiHost(nullptr);
    qvnrt::SetMainLoop(nullptr);
    return status;
}
