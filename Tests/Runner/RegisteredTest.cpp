#include "RegisteredTest.h"

#include <QMetaObject>

#include <algorithm>
#include <vector>

namespace {

/// Filled while the program's static objects are made, in whatever order that happens.
std::vector<const AnyRegisteredTest *> &registry()
{
    static std::vector<const AnyRegisteredTest *> tests;
    return tests;
}

} // namespace

AnyRegisteredTest::AnyRegisteredTest(const QMetaObject &type, TestApplication application)
    : type_(&type)
    , application_(application)
{
    registry().push_back(this);
}

const AnyRegisteredTest *AnyRegisteredTest::named(const QByteArray &className)
{
    const auto &tests = registry();
    const auto found = std::find_if(tests.begin(), tests.end(),
                                    [&](const auto *test) { return className == test->type_->className(); });
    return found == tests.end() ? nullptr : *found;
}

QByteArrayList AnyRegisteredTest::names()
{
    QByteArrayList names;
    for (const auto *test : registry())
        names.append(test->type_->className());
    std::sort(names.begin(), names.end());
    return names;
}
