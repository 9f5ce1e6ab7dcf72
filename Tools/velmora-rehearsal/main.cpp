// velmora-rehearsal: every view of the application in every state, on fakes.

#include "Measure.h"

#include <QCommandLineParser>
#include <QDir>
#include <QGuiApplication>
#include <QPainter>
#include <QProcess>
#include <QTextStream>

#include <Rehearsal/Scenes.h>

#include <algorithm>
#include <optional>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int badArguments = 2;
constexpr std::chrono::milliseconds filmStep(32);
constexpr int filmGap = 4; // Pixels between two pictures.

struct Options {
    StageSetup setup = everydaySetup();
    const Scene *scene = nullptr;
    std::optional<std::chrono::milliseconds> time;
    QString output;
    QString film;
    QString gallery;
    bool measures = false;
    bool measuresFirst = false;
    bool lists = false;
};

void complain(const QString &message)
{
    QTextStream(stderr) << "velmora-rehearsal: " << message << '\n';
}

// What an option that names an enumerator takes.
template<typename Enum>
QString namesOf()
{
    QStringList names;
    for (const int value : allValues<Enum>())
        names.append(rawValue(static_cast<Enum>(value)));
    return u"One of: "_s + names.join(u", "_s) + u'.';
}

QList<QCommandLineOption> commandLine()
{
    return {
        {u"list"_s, u"Print the names of all scenes."_s},
        {u"scene"_s, u"The scene to show, or with --output to take a picture of."_s, u"name"_s},
        {u"theme"_s, namesOf<VelmoraTheme>(), u"theme"_s, u"graphite"_s},
        {u"language"_s, namesOf<AppLanguage>(), u"language"_s, u"english"_s},
        {u"appearance"_s, u"light or dark."_s, u"appearance"_s, u"light"_s},
        {u"reduced-motion"_s, u"As on a desktop that asks for less motion."_s},
        {u"time"_s, u"Milliseconds after which the picture is taken."_s, u"ms"_s},
        {u"output"_s, u"Write the picture of --scene to this PNG file."_s, u"file"_s},
        {u"film"_s,
         u"Write a strip of pictures of --scene, one for each 32 ms of --time or of 640 ms, to this PNG file."_s,
         u"file"_s},
        {u"shoot"_s, u"Write the whole gallery into this folder, at one and two pixels a point."_s,
         u"folder"_s},
        {u"measure"_s, u"Print frame times of the popover and the history."_s},
        {u"measure-first"_s, u"Print the milliseconds to the first frame of this process's first popover."_s},
        {u"font"_s, u"The font of all texts."_s, u"family"_s, u"Inter"_s},
    };
}

// False after a message on stderr.
bool readTime(const QCommandLineParser &line, Options &options)
{
    if (!line.isSet(u"time"_s))
        return true;
    bool isNumber = false;
    const int time = line.value(u"time"_s).toInt(&isNumber);
    if (!isNumber || time < 0) {
        complain(u"--time wants milliseconds"_s);
        return false;
    }
    options.time = std::chrono::milliseconds(time);
    return true;
}

// The options, or nothing after a message on stderr.
std::optional<Options> read(const QCommandLineParser &line)
{
    Options options;
    const auto theme = fromRawValue<VelmoraTheme>(line.value(u"theme"_s));
    const auto language = fromRawValue<AppLanguage>(line.value(u"language"_s));
    const QString appearance = line.value(u"appearance"_s);
    if (!theme || !language || (appearance != u"light" && appearance != u"dark")) {
        complain(u"no such theme, language or appearance"_s);
        return {};
    }
    options.setup.theme = *theme;
    options.setup.language = *language;
    options.setup.darkAppearance = appearance == u"dark";
    options.setup.reducedMotion = line.isSet(u"reduced-motion"_s);
    if (!readTime(line, options))
        return {};
    options.output = line.value(u"output"_s);
    options.film = line.value(u"film"_s);
    const bool draws = !options.output.isEmpty() || !options.film.isEmpty();
    if (line.isSet(u"scene"_s)) {
        options.scene = sceneNamed(line.value(u"scene"_s));
        if (options.scene == nullptr) {
            complain(u"no scene is called "_s + line.value(u"scene"_s));
            return {};
        }
    }
    options.gallery = line.value(u"shoot"_s);
    options.measures = line.isSet(u"measure"_s);
    options.measuresFirst = line.isSet(u"measure-first"_s);
    options.lists = line.isSet(u"list"_s);
    const bool hasJob = options.lists || options.measures || options.measuresFirst ||
                        !options.gallery.isEmpty() || options.scene != nullptr;
    if (!hasJob || (draws && options.scene == nullptr) || !line.positionalArguments().isEmpty()) {
        complain(u"say --list, --scene, --shoot or --measure; see --help"_s);
        return {};
    }
    return options;
}

bool shoot(const Scene &scene, const StageSetup &setup, std::chrono::milliseconds time, const QString &path)
{
    Stage stage(setup);
    if (scene.show(stage) == nullptr) {
        complain(scene.name + u": "_s + stage.warnings.join(u'\n'));
        return false;
    }
    stage.pass(time);
    for (const QString &warning : std::as_const(stage.warnings))
        complain(warning);
    const bool written = stage.picture().save(path, "PNG");
    if (!written)
        complain(u"cannot write "_s + path);
    return written && stage.warnings.isEmpty();
}

// Pictures of a scene from its first moment on, side by side.
bool film(const Scene &scene, const StageSetup &setup, std::chrono::milliseconds time, const QString &path)
{
    Stage stage(setup);
    if (scene.show(stage) == nullptr) {
        complain(scene.name + u": "_s + stage.warnings.join(u'\n'));
        return false;
    }
    std::vector<QImage> pictures;
    int height = 0;
    for (std::chrono::milliseconds at{0}; at <= time; at += filmStep) {
        if (at > std::chrono::milliseconds(0))
            stage.pass(filmStep);
        pictures.push_back(stage.picture());
        height = std::max(height, pictures.back().height());
    }
    const int width = pictures.front().width() + filmGap;
    QImage strip(width * static_cast<int>(pictures.size()), height, QImage::Format_RGB32);
    strip.fill(Qt::black);
    QPainter painter(&strip);
    for (std::size_t i = 0; i < pictures.size(); ++i)
        painter.drawImage(QPoint(width * static_cast<int>(i), 0), pictures[i]);
    painter.end();
    const bool written = strip.save(path, "PNG");
    if (!written)
        complain(u"cannot write "_s + path);
    return written && stage.warnings.isEmpty();
}

// One of the looks of a scene: themes, or appearances of the desktop where the theme changes nothing.
StageSetup lookOf(const Scene &scene, int variant)
{
    StageSetup setup = everydaySetup();
    setup.darkAppearance = scene.themed ? variant != static_cast<int>(VelmoraTheme::light) : variant == 1;
    if (scene.themed)
        setup.theme = static_cast<VelmoraTheme>(variant);
    return setup;
}

bool shootScene(const Scene &scene, AppLanguage language, const QString &folder, const QString &suffix)
{
    const int variants = scene.themed ? static_cast<int>(allValues<VelmoraTheme>().size()) : 2;
    bool good = true;
    for (int variant = 0; variant < variants; ++variant) {
        StageSetup setup = lookOf(scene, variant);
        setup.language = language;
        const QString look =
            scene.themed ? rawValue(setup.theme) : (setup.darkAppearance ? u"dark"_s : u"light"_s);
        const QString name = u"%1-%2-%3%4.png"_s.arg(scene.name, look, rawValue(language), suffix);
        good = shoot(scene, setup, scene.time, folder + u'/' + name) && good;
    }
    return good;
}

// Every scene in both languages, in all themes or both appearances, at the scale this process runs with.
bool shootGallery(const QString &folder, const QString &suffix)
{
    if (!QDir().mkpath(folder)) {
        complain(u"cannot make the folder "_s + folder);
        return false;
    }
    bool good = true;
    for (const Scene &scene : allScenes()) {
        for (const AppLanguage language : {AppLanguage::english, AppLanguage::german})
            good = shootScene(scene, language, folder, suffix) && good;
    }
    return good;
}

// Runs this program again with two pixels a point: the scale belongs to the process.
bool shootLargeGallery(const QString &folder, const QString &font)
{
    QProcess large;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"QT_SCALE_FACTOR"_s, u"2"_s);
    large.setProcessEnvironment(environment);
    large.setProcessChannelMode(QProcess::ForwardedChannels);
    large.start(QCoreApplication::applicationFilePath(), {u"--shoot"_s, folder, u"--font"_s, font});
    return large.waitForFinished(-1) && large.exitCode() == 0;
}

int showLive(const Scene &scene, const StageSetup &setup)
{
    Stage stage(setup);
    stage.setRealTime();
    if (scene.show(stage) == nullptr) {
        complain(stage.warnings.join(u'\n'));
        return 1;
    }
    return QGuiApplication::exec();
}

int perform(const Options &options, const QString &font)
{
    if (options.lists) {
        for (const Scene &scene : allScenes())
            QTextStream(stdout) << scene.name << '\n';
        return 0;
    }
    if (options.measures)
        return measureFrames();
    if (options.measuresFirst)
        return measureFirstFrame();
    if (!options.gallery.isEmpty()) {
        const bool isLarge = qgetenv("QT_SCALE_FACTOR") == "2";
        bool good = shootGallery(options.gallery, isLarge ? u"@2x"_s : QString());
        if (!isLarge)
            good = shootLargeGallery(options.gallery, font) && good;
        return good ? 0 : 1;
    }
    if (!options.film.isEmpty())
        return film(*options.scene, options.setup, options.time.value_or(20 * filmStep), options.film) ? 0
                                                                                                       : 1;
    if (!options.output.isEmpty())
        return shoot(*options.scene, options.setup, options.time.value_or(options.scene->time),
                     options.output)
                   ? 0
                   : 1;
    return showLive(*options.scene, options.setup);
}

} // namespace

int main(int argc, char **argv)
{
    const auto has = [argc, argv](const char *option) {
        return std::any_of(argv, argv + argc, [option](const char *argument) {
            return QByteArrayView(argument).startsWith(option);
        });
    };
    const bool isWatched = has("--scene") && !has("--output") && !has("--film");
    if (!isWatched && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen"); // Pictures need no desktop.
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QGuiApplication application(argc, argv);
    QCommandLineParser line;
    line.setApplicationDescription(u"Shows every screen of Velmora in every state, from fakes."_s);
    line.addHelpOption();
    line.addOptions(commandLine());
    if (!line.parse(QGuiApplication::arguments())) {
        complain(line.errorText());
        return badArguments;
    }
    if (line.isSet(u"help"_s))
        line.showHelp();
    const auto options = read(line);
    if (!options)
        return badArguments;
    prepareFont(line.value(u"font"_s));
    return perform(*options, line.value(u"font"_s));
}
