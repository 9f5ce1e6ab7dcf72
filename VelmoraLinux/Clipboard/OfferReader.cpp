#include "OfferReader.h"

#include "PlainText.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace {

// Read at once, so that a fast owner of a long text does not keep us from everything else.
constexpr std::size_t mostAtOnce = std::size_t(256) * 1024;

} // namespace

OfferReader::OfferReader(DataControlDevice &device, Scheduler &scheduler, TransferLimits limits, Done done)
    : device_(device)
    , mostBytes_(limits.bytes)
    , done_(std::move(done))
    , deadline_(scheduler, limits, [this] { finish(std::nullopt); })
    , steps_(scheduler)
{
    const auto &offered = device_.offered();
    targets_ = PlainText::targetsAmong(offered);
    std::reverse(targets_.begin(), targets_.end());
    const bool isMarked = std::find(offered.begin(), offered.end(), PlainText::secretMark) != offered.end();
    if (!targets_.empty() && isMarked)
        request(std::string(PlainText::secretMark), &OfferReader::useMark);
    else
        tryNextTarget();
}

OfferReader::~OfferReader()
{
    closePipe();
}

void OfferReader::request(const std::string &type, Use use)
{
    type_ = type;
    use_ = use;
    bytes_.clear();
    pipe_ = device_.receive(type);
    if (!pipe_.isOpen())
        return steps_.after({}, [this] { finish(std::nullopt); });
    notifier_ = new QSocketNotifier(pipe_.get(), QSocketNotifier::Read);
    QObject::connect(notifier_, &QSocketNotifier::activated, notifier_, [this] { readMore(); });
}

void OfferReader::readMore()
{
    const std::size_t before = bytes_.size();
    bytes_.resize(before + mostAtOnce);
    const ssize_t size = ::read(pipe_.get(), bytes_.data() + before, mostAtOnce);
    bytes_.resize(before + static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    if (size < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    deadline_.noteProgress();
    if (size < 0 || bytes_.size() > mostBytes_)
        return finish(std::nullopt);
    if (size > 0)
        return;
    closePipe();
    (this->*use_)();
}

void OfferReader::useMark()
{
    if (PlainText::isSecret(bytes_))
        finish(std::nullopt);
    else
        tryNextTarget();
}

void OfferReader::useText()
{
    if (auto text = PlainText::decoded(type_, std::move(bytes_)))
        finish(std::move(text));
    else
        tryNextTarget();
}

void OfferReader::tryNextTarget()
{
    if (targets_.empty())
        return steps_.after({}, [this] { finish(std::nullopt); });
    const std::string target = std::move(targets_.back());
    targets_.pop_back();
    request(target, &OfferReader::useText);
}

void OfferReader::closePipe()
{
    if (notifier_ != nullptr) {
        notifier_->setEnabled(false);
        notifier_->disconnect();
        std::exchange(notifier_, nullptr)->deleteLater();
    }
    pipe_ = {};
}

void OfferReader::finish(std::optional<std::string> text)
{
    closePipe();
    // The last thing done here: the handler may destroy this object.
    if (const Done done = std::exchange(done_, nullptr))
        done(std::move(text));
}
