#include <QColorDialog>
#include <QComboBox>
#include <QDir>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QtTest>

#include <algorithm>
#include <atomic>
#include <functional>

#include "MainProcess.h"
#include "MainThread.h"
#include "OutputCapture.h"
#include "Patience.h"
#include "PluginHost.h"
#include "Scripting.h"
#include "oxCameraService.h"
#include "oxKernelServiceFactory.h"
#include "oxMaterialService.h"
#include "oxMessageService.h"
#include "oxUndoService.h"

namespace {

// The scan goes in the file system's order.
QList<QByteArray> sortedLines(const QByteArray &text)
{
    QList<QByteArray> lines = text.split('\n');
    std::sort(lines.begin(), lines.end());
    return lines;
}

template<class Widget>
Widget *withText(const QWidget *parent, const QString &text)
{
    const auto widgets = parent->findChildren<Widget *>();
    for (Widget *widget : widgets) {
        if (widget->text() == text)
            return widget;
    }
    return nullptr;
}

/// What is written to standard error from @p action on, until @p text is there.
template<class Action>
QByteArray errorsUntil(const QByteArray &text, const Action &action)
{
    const OutputCapture capture;
    action();
    static_cast<void>(QTest::qWaitFor([&] { return capture.standardError().contains(text); }, 60000));
    return capture.standardError();
}

/// What a main process answers to the plugins, in a thread of its own.
class MaterialsMain : public oxMaterialService
{
public:
    QList<oxdMaterial> getMaterials() override
    {
        ++calls;
        QList<oxdMaterial> materials;
        for (int i = 0; i < m_colors.size(); ++i)
            materials.append(oxdMaterial(static_cast<unsigned long long>(i) + 1));
        return materials;
    }
    QStringList getNames(const QList<oxdMaterial> &materials) override
    {
        ++calls;
        QStringList names;
        for (const oxdMaterial &material : materials)
            names.append(material.objectId() == 1 ? QStringLiteral("Body") : QStringLiteral("Floor"));
        return names;
    }
    QVariantList getColors(const QList<oxdMaterial> &materials) override
    {
        ++calls;
        QVariantList colors;
        for (const oxdMaterial &material : materials)
            colors.append(hasNoColors ? QVariant(QPoint()) : m_colors.at(int(material.objectId()) - 1));
        if (changesAsItAnswers.exchange(false))
            paint(0, Qt::cyan);
        return colors;
    }
    void setColor(const QList<oxdMaterial> &materials, const QColor &color) override
    {
        for (const oxdMaterial &material : materials)
            paint(int(material.objectId()) - 1, color);
    }

    void paint(int index, const QColor &color)
    {
        m_colors[index] = color;
        Q_EMIT materialsChanged();
    }
    void removeLast()
    {
        m_colors.removeLast();
        Q_EMIT materialsChanged();
    }

    std::atomic<int> calls = 0;
    std::atomic<bool> changesAsItAnswers = false;
    std::atomic<bool> hasNoColors = false;

private:
    QVector<QColor> m_colors{Qt::red, Qt::green};
};

class CameraMain : public oxCameraService
{
public:
    void orbit(double byAzimuth, double byElevation) override
    {
        azimuth = azimuth + byAzimuth;
        elevation = elevation + byElevation;
        ++steps;
    }
    void reset() override
    {
        azimuth = 0;
        isItselfTurning = true;
    }
    void setTurning(bool on) override { isItselfTurning = on; }

    std::atomic<int> steps = 0;
    std::atomic<double> azimuth = 0;
    std::atomic<double> elevation = 0;
    std::atomic<bool> isItselfTurning = true;
};

// One step, which is done at first.
class UndoMain : public oxUndoService
{
public:
    bool canUndo() override
    {
        ++calls;
        return m_isDone;
    }
    bool canRedo() override
    {
        ++calls;
        return !m_isDone;
    }
    void undo() override { set(false); }
    void redo() override { set(true); }

    std::atomic<int> calls = 0;

private:
    void set(bool isDone)
    {
        m_isDone = isDone;
        Q_EMIT changed();
    }

    bool m_isDone = true;
};

struct SceneMain
{
    MaterialsMain materials;
    CameraMain camera;
    UndoMain undo;

    QObjectList services() { return {&materials, &camera, &undo}; }
};

} // namespace

/// Each plugin of Examples/Scripts that uses PythonQt does what it shows, in an installation without
/// PySide2.
class tst_ExamplePlugins : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void scanLoadsEach();
    void onlyPluginsForPySide2Fail();
    void reloadRepeatsIt();
    void helloShowsItsLabel();
    void colorMixerFollowsItsSliders();
    void messagesReachTheService_data();
    void messagesReachTheService();
    void stopwatchRunsStopsAndResets();
    void spirographPaintsItsCurve();
    void spirographPaintsAfterAnError();
    void unitConverterConverts();
    void materialBrowserWaitsForAMainProcess();
    void materialBrowserPaintsAMaterial();
    void materialBrowserPaintsNothingWithoutASelection();
    void materialBrowserPaintsAnyColor();
    void materialBrowserShowsWhatOthersChange();
    void materialBrowserShowsWhatChangesAsItAsks();
    void materialBrowserSelectsAnotherWhenTheLastGoes();
    void materialBrowserTakesChangesBack();
    void materialBrowserAsksForWhatChangedAlone();
    void materialBrowserGoesOnAfterAnError();
    void turntableWaitsForAMainProcess();
    void turntableTellsItsSpeed();
    void turntableTurnsTheCamera();
    void turntableStopsWithTheMainProcess();
    void cleanup();

private:
    void startMain();
    QListWidget *materials() const { return content("MaterialBrowser")->findChild<QListWidget *>(); }
    // A material's name, and the colour in the middle of its swatch.
    QString shownMaterial(int row) const;
    QWidget *content(const char *module) const;

    PluginHost *m_host = nullptr;
    std::unique_ptr<MainThread> m_main;
    std::unique_ptr<SceneMain> m_scene;
    Output m_scanned; ///< what the first scan printed
};

void tst_ExamplePlugins::initTestCase()
{
    m_host = new PluginHost; // never deleted: Python's wrappers may outlive it
    PluginHost::run(QStringLiteral("sys.path.insert(0, '" SOURCE_DIR "/Share/lib/python')"));
    qputenv("OX_PLUGINS_DIR", SOURCE_DIR "/Examples");
    bindServicesForScripts(new MainProcess(&m_host->client, &m_host->window));
}

void tst_ExamplePlugins::cleanup()
{
    m_main.reset();
    m_scene.reset();
    QTRY_VERIFY(!m_host->client.isConnected());
    m_host->client.disconnectFromHost();
}

void tst_ExamplePlugins::startMain()
{
    m_main = std::make_unique<MainThread>();
    m_scene = std::make_unique<SceneMain>();
    for (QObject *service : m_scene->services())
        m_main->offer(service);
    QVERIFY(m_host->client.connectToHost(m_main->address()));
    QVERIFY(m_host->client.waitForConnected(20000));
}

QString tst_ExamplePlugins::shownMaterial(int row) const
{
    const QListWidgetItem *item = materials()->item(row);
    if (!item)
        return QString();
    const QImage icon = item->icon().pixmap(26, 26).toImage();
    return item->text() + QLatin1Char(' ') + icon.pixelColor(icon.rect().center()).name();
}

QWidget *tst_ExamplePlugins::content(const char *module) const
{
    const QDockWidget *dock = m_host->dock(QString::fromLatin1(module));
    return dock ? dock->widget() : nullptr;
}

void tst_ExamplePlugins::scanLoadsEach()
{
    QByteArray expected;
    for (const char *name : {"ColorMixer", "Hello", "MaterialBrowser", "Messages", "Spirograph", "Stopwatch",
                             "Turntable", "UnitConverter"})
        expected += QByteArray("PythonQt: yes PySide2: no\nLoaded '") + name + "' python plugin.\n";
    for (const char *name : {"LensCalculator", "Orbits", "PaintTable"})
        expected += QByteArray("PythonQt: no PySide2: yes\nLoaded '") + name + "' python plugin.\n";
    expected += "python info: 'Messages: type a text and press a button'\n";

    m_scanned = outputOf([this] { m_host->scan(); });
    QCOMPARE(sortedLines(m_scanned.standardOutput), sortedLines(expected));
    QCOMPARE(m_host->menu(QStringLiteral("Scripts"))->actions().size(), 11);
}

// One clear error each, and an empty panel.
void tst_ExamplePlugins::onlyPluginsForPySide2Fail()
{
    QByteArrayList errors;
    for (const QByteArray &line : sortedLines(m_scanned.standardError)) {
        if (line.contains("Error"))
            errors += line;
    }
    QCOMPARE(errors,
             QByteArrayList({"python error: 'ImportError: No module named PySide2'",
                             "python error: 'ImportError: No module named PySide2.QtCore'",
                             "python error: 'ImportError: No module named PySide2.QtCore'"}));
    QCOMPARE(m_scanned.standardError.count("Traceback"), 3);
    for (const char *name : {"LensCalculator", "Orbits", "PaintTable"})
        QVERIFY(content(name)->layout()->isEmpty());
}

void tst_ExamplePlugins::reloadRepeatsIt()
{
    const QPointer<QWidget> before = content("Hello");
    const Output output = outputOf([this] { m_host->scan(); });
    QCOMPARE(sortedLines(output.standardOutput), sortedLines(m_scanned.standardOutput));
    QCOMPARE(sortedLines(output.standardError), sortedLines(m_scanned.standardError));
    QVERIFY(!before);
    QCOMPARE(m_host->menu(QStringLiteral("Scripts"))->actions().size(), 11);
}

void tst_ExamplePlugins::helloShowsItsLabel()
{
    QVERIFY(withText<QLabel>(content("Hello"), QStringLiteral("Hello from Python")));
}

void tst_ExamplePlugins::colorMixerFollowsItsSliders()
{
    QWidget *mixer = content("ColorMixer");
    QVERIFY(withText<QLabel>(mixer, QStringLiteral("#3d8bd4")));
    mixer->findChild<QSlider *>(QStringLiteral("red"))->setValue(255);
    mixer->findChild<QSlider *>(QStringLiteral("blue"))->setValue(0);
    QVERIFY(withText<QLabel>(mixer, QStringLiteral("#ff8b00")));
}

void tst_ExamplePlugins::messagesReachTheService_data()
{
    QTest::addColumn<int>("severity");
    QTest::newRow("Information") << int(oxMessageService::Information);
    QTest::newRow("Warning") << int(oxMessageService::Warning);
    QTest::newRow("Error") << int(oxMessageService::Error);
}

void tst_ExamplePlugins::messagesReachTheService()
{
    QFETCH(int, severity);
    QSignalSpy spy(oxKernelServiceFactory::the()->getService<oxMessageService>(), &oxMessageService::messageReceived);
    QWidget *messages = content("Messages");
    messages->findChild<QLineEdit *>()->setText(QStringLiteral("Grüße"));

    withText<QPushButton>(messages, QString::fromLatin1(QTest::currentDataTag()))->click();

    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.at(0).at(0).toInt(), severity);
    QCOMPARE(spy.at(0).at(1).toString(), QStringLiteral("Grüße"));
}

void tst_ExamplePlugins::stopwatchRunsStopsAndResets()
{
    QWidget *stopwatch = content("Stopwatch");
    const auto *display = stopwatch->findChild<QLabel *>();
    const auto isRunning = [display] { return display->text() != QLatin1String("00:00.0"); };

    QTRY_VERIFY(isRunning()); // it starts by itself
    auto *stop = withText<QPushButton>(stopwatch, QStringLiteral("Stop"));
    stop->click();
    QCOMPARE(stop->text(), QStringLiteral("Start"));

    withText<QPushButton>(stopwatch, QStringLiteral("Reset"))->click();
    QVERIFY(!isRunning());
    stop->click();
    QTRY_VERIFY(isRunning());
}

void tst_ExamplePlugins::spirographPaintsItsCurve()
{
    QWidget *spirograph = content("Spirograph");
    const QImage before = spirograph->grab().toImage();
    spirograph->findChild<QSlider *>()->setValue(90);
    const QImage after = spirograph->grab().toImage();
    QVERIFY(before != after);
}

void tst_ExamplePlugins::spirographPaintsAfterAnError()
{
    QWidget *spirograph = content("Spirograph");
    auto *slider = spirograph->findChild<QSlider *>();
    slider->setValue(90);
    const QImage before = spirograph->grab().toImage();
    const Output output = outputOf([&] {
        slider->setMinimum(-73); // where the size of the curve is zero
        slider->setValue(-73);
        spirograph->grab();
        slider->setMinimum(10);
        slider->setValue(90);
    });
    QCOMPARE(output.standardError.count("python error: 'ZeroDivisionError"), 1);
    QVERIFY(!output.standardError.contains("QPaint"));
    QVERIFY(spirograph->grab().toImage() == before);
}

void tst_ExamplePlugins::unitConverterConverts()
{
    QWidget *converter = content("UnitConverter");
    QVERIFY(withText<QLabel>(converter, QStringLiteral("25.4 mm")));
    converter->findChild<QDoubleSpinBox *>()->setValue(10);
    converter->findChildren<QComboBox *>().last()->setCurrentText(QStringLiteral("cm"));
    QVERIFY(withText<QLabel>(converter, QStringLiteral("25.4 cm")));
}

void tst_ExamplePlugins::materialBrowserWaitsForAMainProcess()
{
    QWidget *browser = content("MaterialBrowser");
    QVERIFY(materials()->isHidden());
    const auto *hint = browser->findChild<QLabel *>();
    QVERIFY(!hint->isHidden());
    QVERIFY(hint->text().startsWith(QLatin1String("No main process is connected")));
    const auto *other = withText<QPushButton>(browser, QStringLiteral("Other…"));
    QVERIFY(!other->isEnabled());

    startMain();
    QTRY_VERIFY(!materials()->isHidden());
    QVERIFY(hint->isHidden());
    QCOMPARE(materials()->count(), 2);
    QCOMPARE(shownMaterial(0), QStringLiteral("Body #ff0000"));
    QCOMPARE(shownMaterial(1), QStringLiteral("Floor #00ff00"));
    QCOMPARE(materials()->currentRow(), 0);
    QVERIFY(other->isEnabled());

    m_main.reset();
    QTRY_VERIFY(materials()->isHidden());
    QVERIFY(!hint->isHidden());
    QVERIFY(!other->isEnabled());
    const Output output = outputOf([browser] { browser->findChildren<QPushButton *>().first()->click(); });
    QCOMPARE(output.standardError, QByteArray());
}

void tst_ExamplePlugins::materialBrowserPaintsAMaterial()
{
    startMain();
    QTRY_COMPARE(materials()->count(), 2);
    materials()->setCurrentRow(1);
    const auto buttons = content("MaterialBrowser")->findChildren<QPushButton *>();
    for (QPushButton *paint : {buttons.at(7), buttons.at(2)}) {
        paint->click();
        QTRY_COMPARE(shownMaterial(1), QStringLiteral("Floor ") + paint->toolTip());
        QCOMPARE(shownMaterial(0), QStringLiteral("Body #ff0000"));
        QCOMPARE(materials()->currentRow(), 1);
    }

    // Not tinted, as selected items are.
    const QIcon icon = materials()->item(1)->icon();
    QCOMPARE(icon.pixmap(26, 26, QIcon::Selected).toImage(), icon.pixmap(26, 26).toImage());
}

void tst_ExamplePlugins::materialBrowserPaintsNothingWithoutASelection()
{
    startMain();
    QTRY_COMPARE(materials()->count(), 2);
    auto *paint = content("MaterialBrowser")->findChildren<QPushButton *>().first();
    materials()->setCurrentRow(-1);
    const Output output = outputOf([paint] { paint->click(); });
    materials()->setCurrentRow(0);
    paint->click();
    QTRY_COMPARE(shownMaterial(0), QStringLiteral("Body ") + paint->toolTip());
    QCOMPARE(shownMaterial(1), QStringLiteral("Floor #00ff00"));
    QCOMPARE(output.standardError, QByteArray());
}

void tst_ExamplePlugins::materialBrowserPaintsAnyColor()
{
    startMain();
    QTRY_COMPARE(materials()->count(), 2);
    materials()->setCurrentRow(1);
    auto *other = withText<QPushButton>(content("MaterialBrowser"), QStringLiteral("Other…"));
    const auto clickAndEnd = [other](const std::function<void(QColorDialog *)> &end) {
        QTimer::singleShot(0, other, [&end] { end(qobject_cast<QColorDialog *>(QApplication::activeModalWidget())); });
        other->click();
    };
    QColor first;
    clickAndEnd([&first](QColorDialog *dialog) {
        first = dialog->currentColor();
        dialog->reject();
    });
    QCOMPARE(first, QColor(Qt::green));
    clickAndEnd([](QColorDialog *dialog) {
        dialog->setCurrentColor(Qt::magenta);
        dialog->accept();
    });
    QTRY_COMPARE(shownMaterial(1), QStringLiteral("Floor #ff00ff"));
    QCOMPARE(shownMaterial(0), QStringLiteral("Body #ff0000"));
}

void tst_ExamplePlugins::materialBrowserShowsWhatOthersChange()
{
    startMain();
    QTRY_COMPARE(materials()->count(), 2);
    m_main->run([this] { m_scene->materials.paint(0, Qt::blue); });
    QTRY_COMPARE(shownMaterial(0), QStringLiteral("Body #0000ff"));
}

void tst_ExamplePlugins::materialBrowserShowsWhatChangesAsItAsks()
{
    startMain();
    QTRY_COMPARE(materials()->count(), 2);
    m_scene->materials.changesAsItAnswers = true;
    m_main->run([this] { m_scene->materials.paint(1, Qt::blue); });
    QTRY_COMPARE(shownMaterial(1), QStringLiteral("Floor #0000ff"));
    QTRY_COMPARE(shownMaterial(0), QStringLiteral("Body #00ffff"));
}

void tst_ExamplePlugins::materialBrowserSelectsAnotherWhenTheLastGoes()
{
    startMain();
    QTRY_COMPARE(materials()->count(), 2);
    materials()->setCurrentRow(1);
    m_main->run([this] { m_scene->materials.removeLast(); });
    QTRY_COMPARE(materials()->count(), 1);
    QCOMPARE(materials()->currentRow(), 0);
}

void tst_ExamplePlugins::materialBrowserTakesChangesBack()
{
    startMain();
    QTRY_COMPARE(materials()->count(), 2);
    QWidget *browser = content("MaterialBrowser");
    auto *undo = withText<QPushButton>(browser, QStringLiteral("Undo"));
    auto *redo = withText<QPushButton>(browser, QStringLiteral("Redo"));
    QTRY_VERIFY(undo->isEnabled()); // as this main process says
    QVERIFY(!redo->isEnabled());
    undo->click();
    QTRY_VERIFY(redo->isEnabled());
    QVERIFY(!undo->isEnabled());
    redo->click();
    QTRY_VERIFY(undo->isEnabled());
    QVERIFY(!redo->isEnabled());
}

void tst_ExamplePlugins::materialBrowserAsksForWhatChangedAlone()
{
    startMain();
    auto *undo = withText<QPushButton>(content("MaterialBrowser"), QStringLiteral("Undo"));
    QTRY_VERIFY(materials()->count() == 2 && undo->isEnabled());
    m_scene->materials.calls = 0;
    m_scene->undo.calls = 0;

    m_main->run([this] { m_scene->materials.paint(0, Qt::blue); });
    QTRY_COMPARE(shownMaterial(0), QStringLiteral("Body #0000ff"));
    QCOMPARE(m_scene->materials.calls.load(), 3);
    QCOMPARE(m_scene->undo.calls.load(), 0);

    undo->click();
    QTRY_VERIFY(!undo->isEnabled());
    QCOMPARE(m_scene->materials.calls.load(), 3);
    QCOMPARE(m_scene->undo.calls.load(), 2);
}

// Twice, as the traceback of the last error keeps what was alive.
void tst_ExamplePlugins::materialBrowserGoesOnAfterAnError()
{
    startMain();
    auto *undo = withText<QPushButton>(content("MaterialBrowser"), QStringLiteral("Undo"));
    QTRY_VERIFY(materials()->count() == 2 && undo->isEnabled());
    for (int i = 0; i < 2; ++i) {
        m_scene->materials.hasNoColors = true;
        const QByteArray lines =
            errorsUntil("Called setBrush(", [this] { m_main->run([this] { m_scene->materials.paint(0, Qt::blue); }); });
        QVERIFY2(lines.contains("python error: 'ValueError: Called setBrush("), lines);
        QCOMPARE(lines.count("Traceback"), 1);
        QVERIFY2(!lines.contains("QPaint"), lines);

        m_scene->materials.hasNoColors = false;
        m_main->run([this] { m_scene->materials.paint(1, Qt::yellow); });
        QTRY_COMPARE(shownMaterial(1), QStringLiteral("Floor #ffff00"));
        QCOMPARE(shownMaterial(0), QStringLiteral("Body #0000ff"));
        m_main->run([this] { m_scene->materials.paint(1, Qt::green); });
        QTRY_COMPARE(shownMaterial(1), QStringLiteral("Floor #00ff00"));
    }
    undo->click();
    QTRY_VERIFY(!undo->isEnabled());
}

void tst_ExamplePlugins::turntableWaitsForAMainProcess()
{
    QWidget *turntable = content("Turntable");
    auto *start = withText<QPushButton>(turntable, QStringLiteral("Start"));
    const auto *hint = turntable->findChildren<QLabel *>().last();
    const auto *reset = withText<QPushButton>(turntable, QStringLiteral("Reset"));
    QVERIFY(!start->isEnabled());
    QVERIFY(!reset->isEnabled());
    QVERIFY(!hint->isHidden());
    QVERIFY(hint->text().startsWith(QLatin1String("No main process is connected")));

    startMain();
    QTRY_VERIFY(start->isEnabled());
    QVERIFY(reset->isEnabled());
    QVERIFY(hint->isHidden());
}

void tst_ExamplePlugins::turntableTellsItsSpeed()
{
    QWidget *turntable = content("Turntable");
    const auto *display = turntable->findChild<QLabel *>();
    QCOMPARE(display->text(), QStringLiteral("+45°/s"));
    for (const int speed : {-180, 45}) {
        turntable->findChild<QSlider *>()->setValue(speed);
        QCOMPARE(display->text(), speed < 0 ? QStringLiteral("-180°/s") : QStringLiteral("+45°/s"));
    }
}

void tst_ExamplePlugins::turntableTurnsTheCamera()
{
    startMain();
    QWidget *turntable = content("Turntable");
    auto *start = withText<QPushButton>(turntable, QStringLiteral("Start"));
    QTRY_VERIFY(start->isEnabled());

    QElapsedTimer time;
    time.start();
    start->click();
    QCOMPARE(start->text(), QStringLiteral("Stop"));
    QTRY_VERIFY(m_scene->camera.steps > 5);
    const double azimuth = m_scene->camera.azimuth;
    QVERIFY(azimuth > 0);
    QVERIFY(azimuth <= 45 * (time.elapsed() + 1) / 1000.0); // as far as it has come by this time
    QCOMPARE(m_scene->camera.elevation.load(), 0.0);
    QCOMPARE(m_scene->camera.isItselfTurning.load(), false);
    start->click();
    QCOMPARE(start->text(), QStringLiteral("Start"));
    start->click();
    turntable->findChild<QSlider *>()->setValue(-180);
    QTRY_VERIFY(m_scene->camera.azimuth < 0);

    withText<QPushButton>(turntable, QStringLiteral("Reset"))->click();
    QCOMPARE(start->text(), QStringLiteral("Start"));
    QTRY_COMPARE(m_scene->camera.azimuth.load(), 0.0); // the last that arrives is the reset
    QTRY_COMPARE(m_scene->camera.isItselfTurning.load(), true);
}

void tst_ExamplePlugins::turntableStopsWithTheMainProcess()
{
    startMain();
    auto *start = withText<QPushButton>(content("Turntable"), QStringLiteral("Start"));
    QTRY_VERIFY(start->isEnabled());
    Output output = outputOf([&] {
        start->click();
        QTRY_VERIFY(m_scene->camera.azimuth != 0);
        m_main.reset();
        QTRY_COMPARE(start->text(), QStringLiteral("Start"));
    });
    QVERIFY(!start->isEnabled());
    // The services of a main process that ends go shortly before its connection.
    output.standardError.replace("oxQRPCClient: not offered by the main process, "
                                 "oxCameraService::orbit(double,double) does nothing\n",
                                 "");
    QCOMPARE(output.standardError, QByteArray());
}

QTEST_MAIN(tst_ExamplePlugins)
#include "tst_ExamplePlugins.moc"
