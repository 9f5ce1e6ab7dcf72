#include "RecordedDisk.h"
#include "TestStore.h"

#include <QTest>

#include <Runner/RegisteredTest.h>

#include <map>

using namespace Qt::StringLiterals;

using Unsynced = RecordedDisk::Unsynced;

namespace {

// The values of this test's store.
using Contents = std::map<QString, QByteArray>;

constexpr int entriesKept = 8;

Contents contentsOf(const SqliteDefaultsStore &store)
{
    Contents contents;
    for (const QString &key : {u"total"_s, u"name"_s, u"history"_s, u"queue"_s}) {
        if (const auto number = store.integer(key))
            contents[key] = QByteArray::number(*number);
        else if (const auto text = store.string(key))
            contents[key] = text->toUtf8();
        else if (const auto data = store.data(key))
            contents[key] = *data;
    }
    return contents;
}

// What the store holds after each change, and when the disk has got it.
struct Recording {
    QList<Contents> states{Contents{}};
    QList<qsizetype> begins{0}; // Behind how many steps each change began.
    // By a number of steps: the state that is on the disk from then on.
    std::map<qsizetype, qsizetype> durable{{0, 0}};
};

// Uses a store as the application does.
class Usage {
public:
    Usage(QString folder, RecordedDisk &disk, unsigned seed)
        : folder_(std::move(folder))
        , disk_(disk)
        , random_(seed)
        , store_(std::make_unique<SqliteDefaultsStore>(folder_))
    {
    }

    ~Usage() { close(); }

    Q_DISABLE_COPY_MOVE(Usage)

    void change()
    {
        recording_.begins.append(disk_.steps());
        switch (random_() % 8) {
        case 0:
            store_->setString(u"name", QString::number(random_()));
            break;
        case 1:
            history_.clear();
            store_->remove(u"history");
            break;
        case 2:
            store_->setPieces(u"queue", {QByteArray::number(random_()).repeated(600)});
            break;
        default:
            clean();
        }
        recording_.states.append(contentsOf(*store_));
        if (random_() % 5 == 0) {
            store_->finishTidying();
            // Without removed text there is nothing to tidy, and nothing is promised.
            tidied();
        }
        if (random_() % 16 == 0)
            reopen();
    }

    void close()
    {
        store_.reset();
        noteDurable();
    }

    [[nodiscard]] const Recording &recording() const { return recording_; }

private:
    void clean()
    {
        history_.prepend(QByteArray::number(random_()).repeated(static_cast<qsizetype>(random_() % 900)) +
                         '\n');
        history_.resize(std::min<qsizetype>(history_.size(), entriesKept));
        const DefaultsStore::Group group(*store_);
        store_->setInteger(u"total", ++total_);
        store_->setPieces(u"history", history_);
    }

    void tidied()
    {
        if (QFile(folder_ + u"/defaults.sqlite-wal"_s).size() == 0)
            noteDurable();
    }

    void reopen()
    {
        close();
        store_ = std::make_unique<SqliteDefaultsStore>(folder_);
    }

    void noteDurable() { recording_.durable[disk_.steps()] = recording_.states.size() - 1; }

    QString folder_;
    RecordedDisk &disk_;
    std::mt19937 random_;
    std::unique_ptr<SqliteDefaultsStore> store_;
    Recording recording_;
    QByteArrayList history_;
    qint64 total_ = 0;
};

// The longest list that still fits a quick test; "make faults" asks for more.
int changes()
{
    const int asked = qEnvironmentVariableIntValue("VELMORA_POWER_CUTS");
    return asked > 0 ? asked : 40;
}

const char *nameOf(Unsynced unsynced)
{
    return unsynced == Unsynced::lost ? "lost" : unsynced == Unsynced::kept ? "kept" : "kept in part";
}

} // namespace

class PowerCutTests : public QObject, private TestHome {
    Q_OBJECT

private:
    // What a start finds after the cut; an empty text or what is wrong.
    [[nodiscard]] QByteArray complaint(const RecordedDisk::Files &files, const Recording &recording,
                                       qsizetype steps) const
    {
        const QString place = home() + u"/after"_s;
        QDir(place).removeRecursively();
        QDir().mkpath(place);
        for (auto file = files.cbegin(); file != files.cend(); ++file) {
            QFile written(place + u'/' + file.key());
            if (!written.open(QIODevice::WriteOnly) || written.write(file.value()) != file.value().size())
                return "cannot write the files";
        }
        SqliteDefaultsStore store(place);
        if (!problemsOf(store).isEmpty())
            return "the store reports a problem";
        const auto durable = std::prev(recording.durable.upper_bound(steps))->second;
        const Contents found = contentsOf(store);
        for (qsizetype i = recording.states.size() - 1; i >= durable; --i) {
            if (recording.begins[i] <= steps && recording.states[i] == found)
                return {};
        }
        return "what was on the disk is lost, or it is no state that there was";
    }

private Q_SLOTS:

    void init() { begin(); }

    // Behind every step: the store opens, and holds what it held after some change, none older than the last of
    // which the disk has been waited for.
    void aCutAtAnyWriteLosesNothingThatTheDiskHad()
    {
        RecordedDisk disk(folder());
        const unsigned seed = 20261121;
        Usage usage(folder(), disk, seed);
        for (int i = 0; i < changes(); ++i)
            usage.change();
        usage.close();
        const qsizetype steps = disk.steps();
        QVERIFY2(disk.syncCount() > 4 && usage.recording().durable.size() > 4,
                 "the disk is waited for now and then");

        std::mt19937 random(seed);
        int cuts = 0;
        for (qsizetype step = 0; step <= steps; ++step) {
            for (const Unsynced unsynced :
                 {Unsynced::lost, Unsynced::kept, Unsynced::someKept, Unsynced::someKept}) {
                ++cuts;
                const QByteArray wrong =
                    complaint(disk.afterCut(step, unsynced, random), usage.recording(), step);
                QVERIFY2(wrong.isEmpty(),
                         qPrintable(u"cut behind step %1 of %2, unsynced writes %3: %4"_s.arg(
                             QString::number(step), QString::number(steps),
                             QLatin1StringView(nameOf(unsynced)), QString::fromUtf8(wrong))));
            }
        }
        qInfo("%d changes, %lld steps, %d cuts", changes(), static_cast<long long>(steps), cuts);
    }
};

static const RegisteredTest<PowerCutTests> registered;
#include "PowerCutTests.moc"
