// The entry of every program of tests with Qt. Usage: PROGRAM CLASS [FUNCTION or option of Qt Test]...

#include "RegisteredTest.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QTest>

#include <array>
#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

namespace {

void printUsage(const char *program)
{
    std::fprintf(stderr, "usage: %s CLASS [FUNCTION or option of Qt Test]...\nThe classes in this program:\n",
                 program);
    for (const QByteArray &name : AnyRegisteredTest::names())
        std::fprintf(stderr, "  %s\n", name.constData());
}

std::unique_ptr<QCoreApplication> makeApplication(TestApplication kind, int &argc, char **argv)
{
    if (kind == TestApplication::gui)
        return std::make_unique<QGuiApplication>(argc, argv);
    return std::make_unique<QCoreApplication>(argc, argv);
}

// A class that is started by hand sees the same as under ctest: no display, one time zone, one language.
void setUsualSurroundings()
{
    constexpr std::array<std::pair<const char *, const char *>, 4> usual = {{{"QT_QPA_PLATFORM", "offscreen"},
                                                                             {"QT_QUICK_BACKEND", "software"},
                                                                             {"TZ", "UTC"},
                                                                             {"LC_ALL", "C.UTF-8"}}};
    for (const auto &[name, value] : usual) {
        if (!qEnvironmentVariableIsSet(name))
            qputenv(name, value);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    const AnyRegisteredTest *test = argc > 1 ? AnyRegisteredTest::named(argv[1]) : nullptr;
    if (test == nullptr) {
        printUsage(argv[0]);
        return 2;
    }
    // Qt Test gets the program's name and what stands behind the class's.
    std::vector<char *> arguments{argv[0]};
    arguments.insert(arguments.end(), argv + 2, argv + argc);
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);

    setUsualSurroundings();
    QCoreApplication::setAttribute(
        Qt::AA_Use96Dpi); // As Qt Test's own entries do: the same pictures on every screen.
    const auto application = makeApplication(test->application(), count, arguments.data());
    return QTest::qExec(test->make().get(), count, arguments.data());
}
