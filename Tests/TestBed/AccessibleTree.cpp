// accessible-tree: what assistive tools see of the programs of a session, and what they can do there.
//
//   accessible-tree list            every element: depth, role, name, states and actions, separated by tabs
//   accessible-tree press NAME      does the first action of the element that is called so; 1 when there is none
//   accessible-tree type NAME TEXT  replaces the text of the element that is called so
//   accessible-tree watch           prints role and name of each element that says that it is shown, until it is ended
//
// Speaks the protocol of AT-SPI on its own bus, whose address the session's bus knows.

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QTextStream>

#include <functional>
#include <optional>

using namespace Qt::StringLiterals;

// A program's name on the bus and an object of it.
struct Reference {
    QString service;
    QDBusObjectPath path;
};

Q_DECLARE_METATYPE(Reference)

QDBusArgument &operator<<(QDBusArgument &out, const Reference &reference)
{
    out.beginStructure();
    out << reference.service << reference.path;
    out.endStructure();
    return out;
}

const QDBusArgument &operator>>(const QDBusArgument &in, Reference &reference)
{
    in.beginStructure();
    in >> reference.service >> reference.path;
    in.endStructure();
    return in;
}

namespace {

const QString accessible = u"org.a11y.atspi.Accessible"_s;
const QString action = u"org.a11y.atspi.Action"_s;
constexpr int timeLimit = 5000; // Milliseconds for an answer.

struct Named {
    uint bit;
    const char *name;
};

// The states that matter here, by their number in the protocol.
constexpr Named states[] = {{4, "checked"},  {7, "editable"},  {8, "enabled"}, {11, "focusable"},
                            {12, "focused"}, {23, "selected"}, {25, "showing"}};

struct Element {
    Reference reference;
    int depth = 0;
    QString role;
    QString name;
    QStringList states;
    QStringList actions;
};

class AccessibilityBus {
public:
    AccessibilityBus()
        : bus_(QDBusConnection::connectToBus(address(), u"accessibility"_s))
    {
    }

    [[nodiscard]] QDBusConnection &connection() { return bus_; }

    QList<QVariant> ask(const Reference &target, const QString &interface, const QString &method,
                        const QVariantList &arguments = {})
    {
        QDBusMessage call =
            QDBusMessage::createMethodCall(target.service, target.path.path(), interface, method);
        call.setArguments(arguments);
        return bus_.call(call, QDBus::Block, timeLimit).arguments();
    }

    QVariant property(const Reference &target, const QString &interface, const QString &name)
    {
        const auto answer = ask(target, u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {interface, name});
        return answer.isEmpty() ? QVariant() : answer.constFirst().value<QDBusVariant>().variant();
    }

    Element describe(const Reference &reference, int depth)
    {
        Element element;
        element.reference = reference;
        element.depth = depth;
        element.role = ask(reference, accessible, u"GetRoleName"_s).value(0).toString();
        element.name = property(reference, accessible, u"Name"_s).toString();
        const auto bits = qdbus_cast<QList<uint>>(
            ask(reference, accessible, u"GetState"_s).value(0).value<QDBusArgument>());
        for (const auto &[bit, name] : states) {
            if (bits.value(0) >> bit & 1U)
                element.states.append(QString::fromLatin1(name));
        }
        const int actions = property(reference, action, u"NActions"_s).toInt();
        for (int i = 0; i < actions; ++i)
            element.actions.append(ask(reference, action, u"GetName"_s, {i}).value(0).toString());
        return element;
    }

    QList<Reference> children(const Reference &reference)
    {
        const auto answer = ask(reference, accessible, u"GetChildren"_s);
        return answer.isEmpty() ? QList<Reference>()
                                : qdbus_cast<QList<Reference>>(answer.constFirst().value<QDBusArgument>());
    }

    // Calls `visit` for every element below the desktop's, parents first, until it returns true.
    bool visit(const std::function<bool(const Element &)> &visit)
    {
        const Reference desktop{u"org.a11y.atspi.Registry"_s,
                                QDBusObjectPath(u"/org/a11y/atspi/accessible/root"_s)};
        return visitBelow(desktop, 0, visit);
    }

private:
    static QString address()
    {
        const QDBusMessage call = QDBusMessage::createMethodCall(u"org.a11y.Bus"_s, u"/org/a11y/bus"_s,
                                                                 u"org.a11y.Bus"_s, u"GetAddress"_s);
        return QDBusConnection::sessionBus().call(call).arguments().value(0).toString();
    }

    bool visitBelow(const Reference &parent, int depth, const std::function<bool(const Element &)> &visit)
    {
        for (const Reference &child : children(parent)) {
            if (visit(describe(child, depth)) || visitBelow(child, depth + 1, visit))
                return true;
        }
        return false;
    }

    QDBusConnection bus_;
};

// The first element that is called `name`, is shown, and that `fits`.
std::optional<Element> find(AccessibilityBus &bus, const QString &name,
                            const std::function<bool(const Element &)> &fits)
{
    std::optional<Element> found;
    bus.visit([&](const Element &element) {
        if (element.name == name && element.states.contains("showing"_L1) && fits(element))
            found = element;
        return found.has_value();
    });
    return found;
}

int list(AccessibilityBus &bus)
{
    QTextStream out(stdout);
    bus.visit([&out](const Element &element) {
        out << element.depth << '\t' << element.role << '\t' << element.name << '\t'
            << element.states.join(u',') << '\t' << element.actions.join(u',') << '\n';
        return false;
    });
    return 0;
}

int press(AccessibilityBus &bus, const QString &name)
{
    const auto element = find(bus, name, [](const Element &e) { return !e.actions.isEmpty(); });
    if (!element)
        return 1;
    return bus.ask(element->reference, action, u"DoAction"_s, {0}).value(0).toBool() ? 0 : 1;
}

int type(AccessibilityBus &bus, const QString &name, const QString &text)
{
    const auto element = find(bus, name, [](const Element &e) { return e.states.contains("editable"_L1); });
    if (!element)
        return 1;
    const auto done =
        bus.ask(element->reference, u"org.a11y.atspi.EditableText"_s, u"SetTextContents"_s, {text});
    return done.value(0).toBool() ? 0 : 1;
}

class Watcher : public QObject {
    Q_OBJECT

public:
    explicit Watcher(AccessibilityBus &bus)
        : bus_(bus)
    {
        const Reference registry{u"org.a11y.atspi.Registry"_s,
                                 QDBusObjectPath(u"/org/a11y/atspi/registry"_s)};
        bus_.connection().connect({}, {}, u"org.a11y.atspi.Event.Object"_s, u"StateChanged"_s, this,
                                  SLOT(stateChanged(QDBusMessage)));
        bus_.ask(registry, u"org.a11y.atspi.Registry"_s, u"RegisterEvent"_s, {u"object:state-changed"_s});
        QTextStream(stdout) << "watching\n";
    }

private:
    Q_SLOT void stateChanged(const QDBusMessage &event)
    {
        if (event.arguments().value(0).toString() != "showing"_L1 || event.arguments().value(1).toInt() != 1)
            return;
        const Element shown = bus_.describe({event.service(), QDBusObjectPath(event.path())}, 0);
        QTextStream(stdout) << shown.role << '\t' << shown.name << '\n';
    }

    AccessibilityBus &bus_;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    qDBusRegisterMetaType<Reference>();
    qDBusRegisterMetaType<QList<Reference>>();
    const QStringList words = QCoreApplication::arguments().mid(1);
    AccessibilityBus bus;
    if (words == QStringList{u"list"_s})
        return list(bus);
    if (words.size() == 2 && words[0] == "press"_L1)
        return press(bus, words[1]);
    if (words.size() == 3 && words[0] == "type"_L1)
        return type(bus, words[1], words[2]);
    if (words == QStringList{u"watch"_s}) {
        const Watcher watcher(bus);
        return QCoreApplication::exec();
    }
    QTextStream(stderr) << "accessible-tree: say list, press NAME, type NAME TEXT or watch\n";
    return 2;
}

#include "AccessibleTree.moc"
