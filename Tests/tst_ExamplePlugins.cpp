#include <QComboBox>
#include <QDir>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QtTest>

#include <algorithm>

#include "OutputCapture.h"
#include "PluginHost.h"
#include "oxKernelServiceFactory.h"
#include "oxMessageService.h"

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

} // namespace

/// Each plugin of Examples/Scripts does what it shows.
class tst_ExamplePlugins : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void scanLoadsEachWithoutAnError();
    void reloadRepeatsItWithoutAnError();
    void helloShowsItsLabel();
    void colorMixerFollowsItsSliders();
    void messagesReachTheService_data();
    void messagesReachTheService();
    void stopwatchRunsStopsAndResets();
    void spirographPaintsItsCurve();
    void unitConverterConverts();

private:
    QWidget *content(const char *module) const;

    PluginHost *m_host = nullptr;
};

void tst_ExamplePlugins::initTestCase()
{
    m_host = new PluginHost; // never deleted: Python's wrappers may outlive it
    PluginHost::run(QStringLiteral("sys.path.insert(0, '" SOURCE_DIR "/Share/lib/python')"));
    qputenv("OX_PLUGINS_DIR", SOURCE_DIR "/Examples");
}

QWidget *tst_ExamplePlugins::content(const char *module) const
{
    const QDockWidget *dock = m_host->dock(QString::fromLatin1(module));
    return dock ? dock->widget() : nullptr;
}

void tst_ExamplePlugins::scanLoadsEachWithoutAnError()
{
    QByteArray expected;
    for (const char *name : {"ColorMixer", "Hello", "Messages", "Spirograph", "Stopwatch", "UnitConverter"})
        expected += QByteArray("PythonQt: yes PySide2: no\nLoaded '") + name + "' python plugin.\n";
    expected += "python info: 'Messages: type a text and press a button'\n";

    const Output output = outputOf([this] { m_host->scan(); });
    QCOMPARE(sortedLines(output.standardOutput), sortedLines(expected));
    QCOMPARE(output.standardError, QByteArray());
    QCOMPARE(m_host->menu(QStringLiteral("Scripts"))->actions().size(), 6);
}

void tst_ExamplePlugins::reloadRepeatsItWithoutAnError()
{
    const QPointer<QWidget> before = content("Hello");
    const Output output = outputOf([this] { m_host->scan(); });
    QCOMPARE(output.standardError, QByteArray());
    QVERIFY(!before);
    QCOMPARE(m_host->menu(QStringLiteral("Scripts"))->actions().size(), 6);
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

QTEST_MAIN(tst_ExamplePlugins)
#include "tst_ExamplePlugins.moc"
