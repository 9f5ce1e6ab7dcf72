#include "DataControlPasteboard.h"

#include "ClipboardKeeper.h"

#include <QDeadlineTimer>
#include <QRandomGenerator>

#include <algorithm>
#include <utility>

namespace {

constexpr auto longestStart = std::chrono::seconds(2);
constexpr auto longestHandOver = std::chrono::milliseconds(200);
constexpr std::chrono::nanoseconds firstRetry = std::chrono::milliseconds(250);
constexpr std::chrono::nanoseconds lastRetry = std::chrono::seconds(8);

std::string uniqueName()
{
    return "application/x-velmora-own-" + std::to_string(QRandomGenerator::system()->generate64()) + '-';
}

} // namespace

std::unique_ptr<DataControlPasteboard> DataControlPasteboard::create(Scheduler &scheduler, Options options)
{
    std::unique_ptr<DataControlPasteboard> made(new DataControlPasteboard(scheduler, std::move(options)));
    // Once for what the compositor offers, once for what is on the clipboard already.
    if (!made->connect() || !made->connection_->roundTrip(longestStart) || !made->device_->isSupported() ||
        !made->connection_->roundTrip(longestStart))
        return nullptr;
    return made;
}

DataControlPasteboard::DataControlPasteboard(Scheduler &scheduler, Options options)
    : scheduler_(scheduler)
    , options_(std::move(options))
    , writers_(scheduler)
    , retryDelay_(firstRetry)
    , markOfOurs_(uniqueName())
    , connectionSteps_(scheduler)
    , steps_(scheduler)
{
}

DataControlPasteboard::~DataControlPasteboard()
{
    changeHandler_ = nullptr;
    reachHandler_ = nullptr;
    waiting_.clear();
    secrets_.reset();
    reader_.reset();
    if (own_ && own_->text != nullptr && !options_.keeper.isEmpty() && connection_ && !connection_->isLost())
        handOver();
    disconnect();
}

Pasteboard::Reach DataControlPasteboard::reach() const
{
    const bool isConnected = connection_ && !connection_->isLost() && device_->isReady();
    return isConnected ? Reach::all : Reach::none;
}

bool DataControlPasteboard::connect()
{
    connection_ = WaylandConnection::open(options_.display);
    if (!connection_)
        return false;
    // The end of a connection must not come from within one of its own calls.
    const auto endLater = [this] {
        connectionSteps_.after({}, [this] {
            reconnectLater();
            if (reachHandler_)
                reachHandler_();
        });
    };
    connection_->setLostHandler(endLater);
    device_ = std::make_unique<DataControlDevice>(
        *connection_, writers_,
        DataControlDevice::Handlers{.selection = [this](bool isInitial) { handleSelection(isInitial); },
                                    .cancelled = [this] { handleCancelled(); },
                                    .ready =
                                        [this] {
                                            retryDelay_ = firstRetry;
                                            if (reachHandler_)
                                                reachHandler_();
                                        },
                                    .finished = endLater});
    return true;
}

void DataControlPasteboard::disconnect()
{
    connectionSteps_.startOver();
    abortReading();
    loseOwn();
    device_.reset();
    connection_.reset();
}

void DataControlPasteboard::reconnectLater()
{
    disconnect();
    connectionSteps_.after(retryDelay_, [this] {
        if (!connect())
            reconnectLater();
    });
    retryDelay_ = std::min(retryDelay_ * 2, lastRetry);
}

void DataControlPasteboard::handleSelection(bool isInitial)
{
    const auto &offered = device_->offered();
    const auto mark = std::find_if(offered.begin(), offered.end(),
                                   [this](const std::string &type) { return type.starts_with(markOfOurs_); });
    if (mark != offered.end()) { // Counted when it was written.
        if (own_ && own_->mark == *mark) {
            own_->isConfirmed = true;
            settle(true);
        }
        return;
    }
    abortReading();
    if (offered.empty() || isInitial)
        return; // The owner is gone, and nobody has taken its place; or this copy is older than we are.
    // Before the confirmation this is a copy that our write has replaced since.
    if (own_ && (own_->isConfirmed || own_->text == nullptr))
        loseOwn();
    if (isTakingOver_) {
        loseOwn();
        isOvertaken_ = true;
    } else {
        countCopy();
    }
}

void DataControlPasteboard::handleCancelled()
{
    if (own_ && own_->text != nullptr)
        loseOwn();
}

void DataControlPasteboard::loseOwn()
{
    own_.reset();
    settle(false);
}

void DataControlPasteboard::settle(bool isOurs)
{
    if (OutcomeHandler outcome = std::exchange(outcome_, nullptr))
        steps_.after({}, [outcome = std::move(outcome), isOurs] { outcome(isOurs); });
}

void DataControlPasteboard::countCopy()
{
    ++changeCount_;
    notifyLater();
}

// Events may be looked at from within a call of this class, where nobody may be notified.
void DataControlPasteboard::notifyLater()
{
    steps_.after({}, [this] {
        if (changeHandler_)
            changeHandler_();
    });
}

void DataControlPasteboard::readString(TextHandler done)
{
    waiting_.push_back(std::move(done));
    if (own_)
        return answerReaders(own_->text == nullptr ? std::nullopt : std::optional(*own_->text));
    if (reach() == Reach::none || device_->offered().empty())
        return answerReaders(std::nullopt);
    if (waiting_.size() == 1) // Otherwise this one waits together with an earlier one.
        beginReading();
}

void DataControlPasteboard::clear()
{
    beginTakeOver();
    isJustCleared_ = true;
    // A text that follows at once belongs to the same change: others see no empty clipboard in between.
    steps_.after({}, [this] {
        if (std::exchange(isJustCleared_, false))
            takeOver(nullptr);
    });
}

void DataControlPasteboard::setString(std::string text, OutcomeHandler outcome)
{
    if (!std::exchange(isJustCleared_, false))
        beginTakeOver();
    outcome_ = std::move(outcome);
    takeOver(std::make_shared<const std::string>(std::move(text)));
}

void DataControlPasteboard::beginTakeOver()
{
    ++changeCount_;
    settle(false);
    abortReading();
    isOvertaken_ = false;
    isTakingOver_ = true;
    if (connection_)
        connection_->dispatch();
    isTakingOver_ = false;
    if (isOvertaken_)
        steps_.after({}, [this] { countCopy(); }); // After our own change, because it wins.
    else
        own_ = Own{};
    notifyLater();
}

void DataControlPasteboard::takeOver(std::shared_ptr<const std::string> text)
{
    if (isOvertaken_ || !connection_)
        return settle(false);
    own_ = Own{.text = std::move(text), .mark = markOfOurs_ + std::to_string(changeCount_)};
    if (own_->text != nullptr)
        device_->offerText(own_->text, own_->mark);
    else
        device_->clearSelection();
}

// Programs made for X11 are asked before anything is read.
void DataControlPasteboard::beginReading()
{
    if (!secrets_ || !BridgedSecrets::mayBeHidden(device_->offered()))
        return readOffer();
    secrets_->ask([this](bool mayBeRead) {
        if (mayBeRead)
            readOffer();
        else
            answerReaders(std::nullopt);
    });
}

void DataControlPasteboard::readOffer()
{
    reader_ = std::make_unique<OfferReader>(*device_, scheduler_, options_.limits,
                                            [this](const std::optional<std::string> &text) {
                                                // Lives to the end of its own call.
                                                const auto finished = std::move(reader_);
                                                answerReaders(text);
                                            });
}

// Those who wait get nothing, from the event loop: the caller may be in the middle of something.
void DataControlPasteboard::abortReading()
{
    if (secrets_)
        secrets_->giveUp();
    reader_.reset();
    for (TextHandler &done : std::exchange(waiting_, {}))
        steps_.after({}, [done = std::move(done)] { done(std::nullopt); });
}

void DataControlPasteboard::answerReaders(const std::optional<std::string> &text)
{
    for (const TextHandler &done : std::exchange(waiting_, {}))
        done(text);
}

// Waits for another program: only here, where nothing else is left to be done.
void DataControlPasteboard::handOver()
{
    if (!ClipboardKeeper::start(options_.keeper, *own_->text, options_.display))
        return;
    const QDeadlineTimer deadline(longestHandOver);
    while (own_ && !connection_->isLost() && !deadline.hasExpired())
        connection_->wait(std::chrono::milliseconds(deadline.remainingTime()));
}
