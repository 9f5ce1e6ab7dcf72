#pragma once

#include <QByteArrayList>
#include <QObject>

#include <memory>

/// What a test class runs in. Qt Gui costs time and wants a platform, so it is there only for those who ask.
enum class TestApplication {
    core,
    gui,
};

/// A class of Qt Test functions that its program runs when the class's name is the first argument.
class AnyRegisteredTest {
public:
    virtual ~AnyRegisteredTest() = default;
    AnyRegisteredTest(const AnyRegisteredTest &) = delete;
    AnyRegisteredTest &operator=(const AnyRegisteredTest &) = delete;

    TestApplication application() const { return application_; }

    virtual std::unique_ptr<QObject> make() const = 0;

    /// The class of this name, or null.
    static const AnyRegisteredTest *named(const QByteArray &className);
    /// All names, sorted.
    static QByteArrayList names();

protected:
    AnyRegisteredTest(const QMetaObject &type, TestApplication application);

private:
    const QMetaObject *type_;
    TestApplication application_;
};

/// Registers a test class. One object of this type stands at the end of each test's file:
///
///     static const RegisteredTest<AppStateTests> registered;
template<typename Test, TestApplication needed = TestApplication::core>
class RegisteredTest final : public AnyRegisteredTest {
public:
    RegisteredTest()
        : AnyRegisteredTest(Test::staticMetaObject, needed)
    {
    }

    std::unique_ptr<QObject> make() const override { return std::make_unique<Test>(); }
};

template<typename Test>
using RegisteredGuiTest = RegisteredTest<Test, TestApplication::gui>;
