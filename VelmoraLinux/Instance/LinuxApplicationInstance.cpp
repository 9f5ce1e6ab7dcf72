#include "LinuxApplicationInstance.h"

#include "DBusApplication.h"
#include "LocalInstance.h"

#include <VelmoraLinux/Process/ActionName.h>

#include <QDBusMessage>

#include <utility>

using namespace Qt::StringLiterals;

namespace {
constexpr int timeoutMs = 3000; // For a first instance that is busy.

QByteArray startToken()
{
    const QByteArray token = qgetenv("XDG_ACTIVATION_TOKEN");
    return token.isEmpty() ? qgetenv("DESKTOP_STARTUP_ID") : token;
}

// The Desktop Entry Specification's rule: dots become slashes, hyphens underscores.
QString objectPath(QString identifier)
{
    return u'/' + identifier.replace(u'.', u'/').replace(u'-', u'_');
}
} // namespace

LinuxApplicationInstance::LinuxApplicationInstance(QDBusConnection bus, QString identifier,
                                                   ActivationToken &token)
    : bus_(std::move(bus))
    , startedByBus_(qEnvironmentVariableIsSet("DBUS_STARTER_ADDRESS"))
    , identifier_(std::move(identifier))
    , token_(token)
{
}

LinuxApplicationInstance::~LinuxApplicationInstance() = default;

ApplicationInstance::Role LinuxApplicationInstance::claim()
{
    return bus_.isConnected() ? claimOnBus(QDBusConnectionInterface::DontQueueService) : claimLocally();
}

ApplicationInstance::Role LinuxApplicationInstance::claimWhenReleased()
{
    return bus_.isConnected() ? claimOnBus(QDBusConnectionInterface::QueueService) : claimLocally();
}

ApplicationInstance::Role LinuxApplicationInstance::claimLocally()
{
    local_ = std::make_unique<LocalInstance>(identifier_);
    const auto outcome = local_->claim(request_, startToken());
    if (outcome != Role::first)
        return outcome;
    connect(local_.get(), &LocalInstance::reopened, this, [this](const QByteArray &token) {
        token_.keep(token);
        if (reopen_)
            reopen_();
    });
    connect(local_.get(), &LocalInstance::actionChosen, this, &LinuxApplicationInstance::act);
    return Role::first;
}

ApplicationInstance::Role
LinuxApplicationInstance::claimOnBus(QDBusConnectionInterface::ServiceQueueOptions queue)
{
    auto *application = new DBusApplication(this);
    connect(application, &DBusApplication::reopened, this, [this](const QByteArray &token) {
        token_.keep(token);
        if (std::exchange(startedByBus_, false))
            return;
        if (reopen_)
            reopen_();
    });
    connect(application, &DBusApplication::actionChosen, this, &LinuxApplicationInstance::act);
    budget_.emplace(std::initializer_list<QObject *>{application});
    // The object is registered before the name: calls may come as soon as the name exists.
    bus_.registerObject(objectPath(identifier_), application, QDBusConnection::ExportScriptableInvokables);
    const auto reply =
        bus_.interface()->registerService(identifier_, queue, QDBusConnectionInterface::DontAllowReplacement);
    if (!reply.isValid() || reply.value() != QDBusConnectionInterface::ServiceNotRegistered)
        return Role::first;
    return callFirst() ? Role::second : Role::unanswered;
}

bool LinuxApplicationInstance::callFirst()
{
    auto call =
        QDBusMessage::createMethodCall(identifier_, objectPath(identifier_), u"org.freedesktop.Application"_s,
                                       request_ ? u"ActivateAction"_s : u"Activate"_s);
    QVariantMap platformData;
    const QByteArray token = startToken();
    if (!token.isEmpty()) {
        platformData[u"activation-token"_s] = QString::fromUtf8(token);
        platformData[u"desktop-startup-id"_s] = QString::fromUtf8(token);
    }
    if (request_)
        call << QString::fromLatin1(ActionName::of(*request_)) << QVariantList();
    call << platformData;
    // May block: this process ends afterwards.
    return bus_.call(call, QDBus::Block, timeoutMs).type() == QDBusMessage::ReplyMessage;
}

void LinuxApplicationInstance::act(Action action, const QByteArray &token)
{
    startedByBus_ = false;
    token_.keep(token);
    if (act_)
        act_(action);
}

void LinuxApplicationInstance::setReopenHandler(ReopenHandler handler)
{
    reopen_ = std::move(handler);
}

void LinuxApplicationInstance::setActionHandler(ActionHandler handler)
{
    act_ = std::move(handler);
}
