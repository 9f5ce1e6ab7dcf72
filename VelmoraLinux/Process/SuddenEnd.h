#pragma once

#include <functional>

// Runs a last step when something ends the process by exit() while this object exists: the toolkit does so on
// the spot when its X server has gone away. The process then ends with status 0. At most one object exists at
// a time.
class SuddenEnd {
public:
    explicit SuddenEnd(std::function<void()> step);
    ~SuddenEnd();
    SuddenEnd(const SuddenEnd &) = delete;
    SuddenEnd &operator=(const SuddenEnd &) = delete;
};
