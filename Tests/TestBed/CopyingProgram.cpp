#include "CopyingProgram.h"

#include <QDeadlineTimer>
#include <QTest>

#include <csignal>
#include <functional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// Lets the event loop of the test run on; gives up when the process ends.
bool wait(const QProcess &process, const std::function<bool()> &isDone, std::chrono::milliseconds limit)
{
    return QTest::qWaitFor([&] { return isDone() || process.state() == QProcess::NotRunning; },
                           static_cast<int>(limit.count())) &&
           isDone();
}

} // namespace

CopyingProgram::CopyingProgram(const QProcessEnvironment &environment)
{
    process_.setProcessEnvironment(environment);
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QObject::connect(&process_, &QProcess::readyReadStandardOutput, &process_, [this] { readLines(); });
    process_.start(u"" VELMORA_SELECTION_OWNER ""_s, QStringList());
    process_.waitForStarted();
}

CopyingProgram::~CopyingProgram()
{
    process_.disconnect();
    kill();
}

std::optional<std::chrono::nanoseconds> CopyingProgram::copy(const QByteArray &text, const QByteArray &mode)
{
    owned_.reset();
    process_.write(mode + ' ' + QByteArray::number(text.size()) + '\n' + text);
    return waitFor(owned_, 30s);
}

std::optional<std::chrono::nanoseconds> CopyingProgram::copyFilled(qsizetype size)
{
    owned_.reset();
    process_.write("filled " + QByteArray::number(size) + '\n');
    return waitFor(owned_, 30s);
}

void CopyingProgram::release()
{
    lost_.reset();
    process_.write("release\n");
    waitFor(lost_, 30s);
}

std::optional<std::chrono::nanoseconds> CopyingProgram::waitUntilLost(std::chrono::milliseconds limit)
{
    return waitFor(lost_, limit);
}

QList<QByteArray> CopyingProgram::asked()
{
    readLines();
    return asked_;
}

void CopyingProgram::hang()
{
    ::kill(static_cast<pid_t>(process_.processId()), SIGSTOP);
}

void CopyingProgram::goOn()
{
    ::kill(static_cast<pid_t>(process_.processId()), SIGCONT);
}

void CopyingProgram::kill()
{
    process_.kill();
    process_.waitForFinished();
}

void CopyingProgram::readLines()
{
    while (process_.canReadLine()) {
        const QByteArray line = process_.readLine().trimmed();
        const QByteArray rest = line.mid(line.indexOf(' ') + 1);
        if (line.startsWith("owned ")) {
            // Output from before belongs to an earlier copy, even when it is read later.
            lost_.reset();
            asked_.clear();
            owned_ = std::chrono::nanoseconds(rest.toLongLong());
        } else if (line.startsWith("lost "))
            lost_ = std::chrono::nanoseconds(rest.toLongLong());
        else if (line.startsWith("asked "))
            asked_.append(rest);
    }
}

std::optional<std::chrono::nanoseconds>
CopyingProgram::waitFor(std::optional<std::chrono::nanoseconds> &moment, std::chrono::milliseconds limit)
{
    wait(
        process_, [&moment] { return moment.has_value(); }, limit);
    return moment;
}

std::optional<QByteArray> paste(const QProcessEnvironment &environment, const QString &form)
{
    QProcess xclip;
    xclip.setProcessEnvironment(environment);
    xclip.start(u"xclip"_s, {u"-o"_s, u"-selection"_s, u"clipboard"_s, u"-t"_s, form});
    xclip.waitForStarted();
    if (!wait(
            xclip, [&xclip] { return xclip.state() == QProcess::NotRunning; }, 30s) ||
        xclip.exitCode() != 0)
        return std::nullopt;
    return xclip.readAllStandardOutput();
}

bool copyUnheard(const QProcessEnvironment &environment, const QByteArray &text)
{
    QProcess xclip;
    xclip.setProcessEnvironment(environment);
    xclip.start(u"xclip"_s, {u"-selection"_s, u"clipboard"_s, u"-i"_s});
    xclip.write(text);
    xclip.closeWriteChannel();
    if (!xclip.waitForFinished())
        return false;
    const QDeadlineTimer deadline(20000);
    QByteArray pasted;
    while (pasted != text && !deadline.hasExpired()) {
        xclip.start(u"xclip"_s, {u"-selection"_s, u"clipboard"_s, u"-o"_s});
        if (!xclip.waitForFinished())
            return false;
        pasted = xclip.readAll();
    }
    return pasted == text;
}
