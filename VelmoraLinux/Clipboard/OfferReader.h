#pragma once

#include "DataControlDevice.h"
#include "TransferDeadline.h"

#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/Scheduler.h>

#include <QSocketNotifier>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// One reading of the plain text that is on a compositor's clipboard.
//
// Stays away from a copy marked as secret, then has the owner write the best text type into a pipe. Whatever
// goes wrong, `done` gets nothing, once and from the event loop; destroying the reader is silent. `done` may
// destroy the reader.
class OfferReader {
public:
    using Done = std::function<void(std::optional<std::string> text)>;

    OfferReader(DataControlDevice &device, Scheduler &scheduler, TransferLimits limits, Done done);
    ~OfferReader();
    Q_DISABLE_COPY_MOVE(OfferReader)

private:
    using Use = void (OfferReader::*)();

    void request(const std::string &type, Use use);
    void readMore();
    void useMark();
    void useText();
    void tryNextTarget();
    void closePipe();
    void finish(std::optional<std::string> text);

    DataControlDevice &device_;
    std::size_t mostBytes_;
    Done done_;
    std::vector<std::string> targets_; // Still to be tried, the best one last.
    std::string type_;                 // What is being read.
    Use use_ = nullptr;                // What to do with it.
    FileDescriptor pipe_;
    QSocketNotifier *notifier_ = nullptr; // Deleted later, because it may be calling us.
    std::string bytes_;
    TransferDeadline deadline_;
    DelayedSteps steps_;
};
