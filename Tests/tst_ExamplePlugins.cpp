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

#include "MainProcess.h"
#include "MainThread.h"
#include "OutputCapture.h"
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

/// What a main process answers to the plugins, in a thread of its own.
class MaterialsMain : public oxMaterialService
{
public:
    QList<oxdMaterial> getMaterials() override { return {oxdMaterial(1), oxdMaterial(2)}; }
    QStringList getNames(const QList<oxdMaterial> &materials) override
    {
        QStringList names;
        for (const oxdMaterial &material : materials)
            names.append(material.objectId() == 1 ? QStringLiteral("Body") : QStringLiteral("Floor"));
        return names;
    }
    QVariantList getColors(const QList<oxdMaterial> &materials) override
    {
        QVariantList colors;
        for (const oxdMaterial &material : materials)
            colors.append(m_colors.at(int(material.objectId()) - 1));
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

private:
    QVector<QColor> m_colors{Qt::red, Qt::green};
};

class CameraMain : public oxCameraService
{
public:
    void orbit(double byAzimuth, double) override { azimuth = azimuth + byAzimuth; }
    void reset() override
    {
        azimuth = 0;
        isItselfTurning = true;
    }
    void setTurning(bool on) override { isItselfTurning = on; }

    std::atomic<double> azimuth = 0;
    std::atomic<bool> isItselfTurning = true;
};

// One step, which is done at first.
class UndoMain : public oxUndoService
{
public:
    bool canUndo() override { return m_isDone; }
    bool canRedo() override { return !m_isDone; }
    void undo() override { set(false); }
    void redo() override { set(true); }

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
    void unitConverterConverts();
    void materialBrowserWaitsForAMainProcess();
    void materialBrowserPaintsAMaterial();
    void materialBrowserShowsWhatOthersChange();
    void materialBrowserTakesChangesBack();
    void turntableWaitsForAMainProcess();
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

    startMain();
    QTRY_VERIFY(!materials()->isHidden());
    QVERIFY(hint->isHidden());
    QCOMPARE(materials()->count(), 2);
    QCOMPARE(shownMaterial(0), QStringLiteral("Body #ff0000"));
    QCOMPARE(shownMaterial(1), QStringLiteral("Floor #00ff00"));

    m_main.reset();
    QTRY_VERIFY(materials()->isHidden());
    QVERIFY(!hint->isHidden());
    const Output output = outputOf([browser] { browser->findChildren<QPushButton *>().first()->click(); });
    QCOMPARE(output.standardError, QByteArray());
}

void tst_ExamplePlugins::materialBrowserPaintsAMaterial()
{
    startMain();
    QTRY_COMPARE(materials()->count(), 2);
    materials()->setCurrentRow(1);
    auto *paint = content("MaterialBrowser")->findChildren<QPushButton *>().first();
    paint->click();
    QTRY_COMPARE(shownMaterial(1), QStringLiteral("Floor ") + paint->toolTip());
    QCOMPARE(shownMaterial(0), QStringLiteral("Body #ff0000"));
    QCOMPARE(materials()->currentRow(), 1);
}

void tst_ExamplePlugins::materialBrowserShowsWhatOthersChange()
{
    startMain();
    QTRY_COMPARE(materials()->count(), 2);
    m_main->run([this] { m_scene->materials.paint(0, Qt::blue); });
    QTRY_COMPARE(shownMaterial(0), QStringLiteral("Body #0000ff"));
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

void tst_ExamplePlugins::turntableWaitsForAMainProcess()
{
    QWidget *turntable = content("Turntable");
    auto *start = withText<QPushButton>(turntable, QStringLiteral("Start"));
    const auto *hint = turntable->findChildren<QLabel *>().last();
    QVERIFY(!start->isEnabled());
    QVERIFY(!hint->isHidden());
    QVERIFY(hint->text().startsWith(QLatin1String("No main process is connected")));

    startMain();
    QTRY_VERIFY(start->isEnabled());
    QVERIFY(hint->isHidden());
}

void tst_ExamplePlugins::turntableTurnsTheCamera()
{
    startMain();
    QWidget *turntable = content("Turntable");
    auto *start = withText<QPushButton>(turntable, QStringLiteral("Start"));
    QTRY_VERIFY(start->isEnabled());

    start->click();
    QCOMPARE(start->text(), QStringLiteral("Stop"));
    QTRY_VERIFY(m_scene->camera.azimuth > 0);
    QCOMPARE(m_scene->camera.isItselfTurning.load(), false);
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
    const Output output = outputOf([&] {
        start->click();
        QTRY_VERIFY(m_scene->camera.azimuth != 0);
        m_main.reset();
        QTRY_COMPARE(start->text(), QStringLiteral("Start"));
    });
    QVERIFY(!start->isEnabled());
    QCOMPARE(output.standardError, QByteArray());
}

QTEST_MAIN(tst_ExamplePlugins)
#include "tst_ExamplePlugins.moc"
