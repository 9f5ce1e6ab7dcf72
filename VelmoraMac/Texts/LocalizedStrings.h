#pragma once

#include <VelmoraMac/State/AppTypes.h>
#include <VelmoraPlatform/SystemLanguage.h>

#include <QObject>
#include <QString>
#include <qqmlintegration.h>

// Chooses between the two languages of every visible text. Texts are written as pairs where they are used.
class LocalizedStrings : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    // Every AppLanguage, in the order in which they are offered.
    Q_PROPERTY(QList<int> languages READ languages CONSTANT)

public:
    // The language that `AppLanguage::system` follows; English while there is none. Set by the composition root;
    // `source` outlives all use.
    static void setSystemLanguage(const SystemLanguage *source);

    // German for the code "de" exactly, English for every other and for none. Never `system`.
    [[nodiscard]] static AppLanguage defaultLanguage(const QString &languageCode);
    // The default for the desktop's language as it is now.
    [[nodiscard]] static AppLanguage systemDefault();

    [[nodiscard]] static QList<int> languages() { return allValues<AppLanguage>(); }

    Q_INVOKABLE static QString choose(const QString &english, const QString &german,
                                      Velmora::AppLanguage language);
    // "3 removed"; there is no singular form.
    Q_INVOKABLE static QString removedCount(double count, Velmora::AppLanguage language);
    // What stands behind the title of a text of which only the beginning is kept: how long it was. Empty for a
    // whole text, whose `wholeBytes` is 0.
    Q_INVOKABLE static QString beginningNote(double wholeBytes, Velmora::AppLanguage language);
    Q_INVOKABLE static QString languageName(Velmora::AppLanguage named, Velmora::AppLanguage language);
};
