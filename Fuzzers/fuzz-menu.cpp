#include "Expect.h"

#include <VelmoraLinux/StatusItem/DBusMenu.h>

#include <QCoreApplication>

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <cstdint>

using namespace Qt::StringLiterals;

// What a desktop, or any program on the session bus, asks of the exported menu.

namespace {

constexpr int entries = 4; // Of which the second is a separator.
constexpr int mostCalls = 20;

int ran = 0;    // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)
int opened = 0; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

StatusMenu menu()
{
    return {{.title = u"One"_s, .check = StatusMenuEntry::Check::on, .action = [] { ++ran; }},
            {},
            {.title = u"Three"_s, .action = [] { ++ran; }},
            {.title = u"Four"_s}};
}

class Caller {
public:
    Caller(const std::uint8_t *data, std::size_t size)
        : data_(data, size)
    {
    }

    // How many entries are to be run by all calls.
    int callAll(DBusMenu &menu)
    {
        for (int calls = 0; calls < mostCalls && data_.remaining_bytes() > 0; ++calls)
            call(menu);
        return expected_;
    }

private:
    void call(DBusMenu &menu)
    {
        switch (data_.ConsumeIntegralInRange(0, 4)) {
        case 0:
            sendOne(menu);
            break;
        case 1:
            sendSeveral(menu);
            break;
        case 2:
            askForLayout(menu);
            break;
        case 3:
            expect(menu.GetGroupProperties(numbers(), names()).size() <= entries + 1 + mostNumbers,
                   "nothing is made up");
            break;
        default:
            askToOpen(menu);
        }
    }

    void sendOne(DBusMenu &menu)
    {
        const DBusMenuEvent event = anEvent();
        expected_ += runsSomething(event) ? 1 : 0;
        menu.Event(event.id, event.eventId, event.data, event.timestamp);
    }

    void sendSeveral(DBusMenu &menu)
    {
        DBusMenuEvents events;
        qsizetype unknown = 0;
        for (int i = data_.ConsumeIntegralInRange(0, 5); i > 0; --i) {
            events << anEvent();
            unknown += isKnown(events.constLast().id) ? 0 : 1;
            expected_ += runsSomething(events.constLast()) ? 1 : 0;
        }
        expect(menu.EventGroup(events).size() == unknown, "each unknown entry is named");
    }

    // Of an entry that is there: an error needs a caller on a bus.
    void askForLayout(DBusMenu &menu)
    {
        DBusMenuLayout layout;
        const int parent = data_.ConsumeIntegralInRange(0, entries);
        (void)menu.GetLayout(parent, data_.ConsumeIntegral<int>(), names(), layout);
        expect(layout.id == parent && layout.children.size() <= entries, "the layout is that of the menu");
    }

    void askToOpen(DBusMenu &menu)
    {
        QList<int> unknown;
        const QList<int> asked = numbers();
        (void)menu.AboutToShowGroup(asked, unknown);
        expect(unknown.size() ==
                   std::count_if(asked.begin(), asked.end(), [](int id) { return !isKnown(id); }),
               "each unknown entry is named");
    }

    DBusMenuEvent anEvent()
    {
        static constexpr std::array<const char *, 4> kinds = {"clicked", "hovered", "opened", "closed"};
        const QString kind =
            data_.ConsumeBool() ? QString::fromLatin1(data_.PickValueInArray(kinds)) : text();
        return {anId(), kind, QDBusVariant(text()), data_.ConsumeIntegral<uint>()};
    }

    int anId()
    {
        return data_.ConsumeBool() ? data_.ConsumeIntegralInRange(-1, entries + 1)
                                   : data_.ConsumeIntegral<int>();
    }

    QString text() { return QString::fromStdString(data_.ConsumeRandomLengthString(20)); }

    QStringList names()
    {
        QStringList names;
        for (int i = data_.ConsumeIntegralInRange(0, 4); i > 0; --i)
            names << (data_.ConsumeBool() ? u"label"_s : text());
        return names;
    }

    QList<int> numbers()
    {
        QList<int> numbers;
        for (int i = data_.ConsumeIntegralInRange(0, mostNumbers); i > 0; --i)
            numbers << anId();
        return numbers;
    }

    static bool isKnown(int id) { return id >= 0 && id <= entries; }

    static bool runsSomething(const DBusMenuEvent &event)
    {
        return event.eventId == u"clicked" && (event.id == 1 || event.id == 3);
    }

    static constexpr int mostNumbers = 10;

    FuzzedDataProvider data_;
    int expected_ = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int count = 1;
    static std::array<char, 5> name = {"menu"};
    static std::array<char *, 2> arguments = {name.data(), nullptr};
    static const QCoreApplication application(count, arguments.data());
    DBusMenu exported{QDBusConnection(u"no bus"_s)};
    exported.setMenu(menu());
    QObject::connect(&exported, &DBusMenu::opening, [] { ++opened; });
    ran = 0;
    const int expected = Caller(data, size).callAll(exported);
    expect(ran == 0, "an entry does not run before its caller has its answer");
    QCoreApplication::sendPostedEvents();
    expect(ran == expected, "clicks run their entries, and nothing else does");
    return 0;
}
