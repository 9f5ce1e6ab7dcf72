#include <VelmoraLinux/Clipboard/PasteboardFactory.h>
#include <VelmoraLinux/Time/EventLoopScheduler.h>
#include <VelmoraLinux/X11/XcbServer.h>

#include <QTest>

#include <Runner/RegisteredTest.h>
#include <TestBed/CopyingProgram.h>
#include <TestBed/DataControlServer.h>
#include <TestBed/LayerShellServer.h>
#include <TestBed/XServer.h>
#include <xcb/xcb.h>

#include <memory>
#include <string_view>

namespace {

using Reach = Pasteboard::Reach;

// Which clipboards a session has.
enum class Wayland { none, withoutDataControl, withDataControl };

void setProperty(xcb_connection_t *server, std::string_view name, xcb_atom_t type, std::uint8_t format,
                 std::uint32_t size, const void *data)
{
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(server)).data->root;
    const auto question = xcb_intern_atom(server, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const XcbReply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(server, question, nullptr));
    xcb_change_property(server, XCB_PROP_MODE_REPLACE, root, atom->atom, type, format, size, data);
}

// Says who manages the windows, as the window manager does; the root window stands for its own.
void nameWindowManager(const XServer &desktop, std::string_view name)
{
    const XcbServer server = connectToXServer(desktop.display().constData());
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(server.get())).data->root;
    setProperty(server.get(), "_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW, 32, 1, &root);
    setProperty(server.get(), "_NET_WM_NAME", XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(name.size()),
                name.data());
    const XcbReply<xcb_get_input_focus_reply_t> done(
        xcb_get_input_focus_reply(server.get(), xcb_get_input_focus(server.get()), nullptr));
}

} // namespace

Q_DECLARE_METATYPE(Wayland)
Q_DECLARE_METATYPE(Pasteboard::Reach)

// Which back end a session gets.
class PasteboardFactoryTests : public QObject {
    Q_OBJECT

    EventLoopScheduler scheduler_;

private Q_SLOTS:

    void cleanup()
    {
        qunsetenv("DISPLAY");
        qunsetenv("WAYLAND_DISPLAY");
    }

    void theBackEndThatSeesMostIsTaken_data()
    {
        QTest::addColumn<bool>("hasX11");
        QTest::addColumn<QByteArray>("windowManager");
        QTest::addColumn<Wayland>("wayland");
        QTest::addColumn<Pasteboard::Reach>("reach");
        QTest::newRow("nothing") << false << QByteArray() << Wayland::none << Reach::none;
        QTest::newRow("X11") << true << QByteArray() << Wayland::none << Reach::all;
        QTest::newRow("a compositor that shows it to nobody")
            << false << QByteArray() << Wayland::withoutDataControl << Reach::none;
        QTest::newRow("that, with its bridge")
            << true << QByteArray() << Wayland::withoutDataControl << Reach::onlyX11;
        QTest::newRow("a bridge of another window manager")
            << true << QByteArray("KWin") << Wayland::withoutDataControl << Reach::onlyX11;
        QTest::newRow("GNOME's bridge")
            << true << QByteArray("GNOME Shell") << Wayland::withoutDataControl << Reach::all;
        QTest::newRow("Cinnamon's bridge")
            << true << QByteArray("Muffin") << Wayland::withoutDataControl << Reach::all;
        QTest::newRow("data control") << false << QByteArray() << Wayland::withDataControl << Reach::all;
        QTest::newRow("data control, with a bridge")
            << true << QByteArray("KWin") << Wayland::withDataControl << Reach::all;
    }

    void theBackEndThatSeesMostIsTaken()
    {
        QFETCH(bool, hasX11);
        QFETCH(QByteArray, windowManager);
        QFETCH(Wayland, wayland);
        QFETCH(Pasteboard::Reach, reach);
        std::unique_ptr<XServer> desktop;
        std::unique_ptr<LayerShellServer> plain;
        std::unique_ptr<DataControlServer> compositor;
        if (hasX11) {
            desktop = std::make_unique<XServer>();
            if (!windowManager.isEmpty())
                nameWindowManager(*desktop, windowManager.toStdString());
            qputenv("DISPLAY", desktop->display());
        }
        if (wayland == Wayland::withoutDataControl) {
            plain = std::make_unique<LayerShellServer>(LayerShellServer::Offer{});
            qputenv("WAYLAND_DISPLAY", plain->display());
        } else if (wayland == Wayland::withDataControl) {
            compositor = std::make_unique<DataControlServer>(DataControlServer::Protocol::ext);
            qputenv("WAYLAND_DISPLAY", compositor->display());
        }

        const auto pasteboard = makePasteboard(scheduler_);

        QVERIFY(pasteboard);
        QCOMPARE(pasteboard->reach(), reach);
        if (compositor) { // Not the bridge's.
            compositor->copyText("native");
            QTRY_COMPARE(pasteboard->changeCount(), 1);
        }
    }

    void programsMadeForX11AreAskedWhatACompositorDoesNotTell()
    {
        const XServer bridge;
        DataControlServer compositor(DataControlServer::Protocol::wlr);
        qputenv("DISPLAY", bridge.display());
        qputenv("WAYLAND_DISPLAY", compositor.display());
        const auto pasteboard = makePasteboard(scheduler_);
        CopyingProgram manager(bridge.environment());
        QVERIFY(manager.copy("hidden", "secret"));
        compositor.copyText("hidden");
        QTRY_COMPARE(pasteboard->changeCount(), 1);
        std::optional<std::optional<std::string>> answer;
        pasteboard->readString([&answer](std::optional<std::string> text) { answer = std::move(text); });
        QTRY_VERIFY(answer.has_value());
        QVERIFY(!answer->has_value());
        QTRY_VERIFY(manager.asked().contains("x-kde-passwordManagerHint"));
    }

    void withoutAClipboardNothingIsReadOrWritten()
    {
        const auto pasteboard = makePasteboard(scheduler_);
        int answers = 0;
        pasteboard->readString(
            [&answers](const std::optional<std::string> &text) { answers += text ? 100 : 1; });
        std::optional<bool> outcome;
        pasteboard->setString("nobody gets it", [&outcome](bool isOurs) { outcome = isOurs; });
        QVERIFY(!outcome); // From the event loop only.
        QTRY_VERIFY(outcome.has_value());
        QCOMPARE(*outcome, false);
        QCOMPARE(answers, 1);
        QCOMPARE(pasteboard->changeCount(), 0);
    }
};

static const RegisteredTest<PasteboardFactoryTests> registered;
#include "PasteboardFactoryTests.moc"
