#include "RenderView.h"

#include <QMutex>
#include <QSignalSpy>
#include <QtTest>

#include <atomic>
#include <cstring>

#include "FrameSource.h"
#include "MainProcess.h"
#include "MainThread.h"
#include "OutputCapture.h"
#include "Patience.h"
#include "oxFrameWriter.h"
#include "oxQRPCClient.h"
#include "oxRenderService.h"

namespace {

/// What renders in the main process: frames of one colour.
class Renderer : public oxRenderService
{
    Q_OBJECT

public:
    QString getSharedMemoryName() override
    {
        Q_EMIT frameRendered(0); // it goes on rendering
        return m_memory.name();
    }
    int getWidth() override { return 1234; }
    QByteArray getCompressedFrameBuffer() override
    {
        m_isAskedForPictures = true;
        if (m_isAlwaysAhead)
            Q_EMIT frameRendered(0);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        m_frame.save(&buffer, "PNG");
        if (m_next.isValid())
            render(std::exchange(m_next, QColor()), m_frame.size());
        return bytes;
    }
    void resize(int width, int height) override { note("resize %1 %2", {width, height}); }
    void keyPress(int key, int modifiers, int, int) override { note("key press %1 %2", {key, modifiers}); }
    void keyRelease(int key, int modifiers, int, int) override { note("key release %1 %2", {key, modifiers}); }
    void mouseDoubleClick(int x, int y, int button, int modifiers) override
    {
        note("double click %1 %2 %3 %4", {x, y, button, modifiers});
    }
    void mousePress(int x, int y, int button, int modifiers) override
    {
        note("press %1 %2 %3 %4", {x, y, button, modifiers});
    }
    void mouseRelease(int x, int y, int button, int modifiers) override
    {
        note("release %1 %2 %3 %4", {x, y, button, modifiers});
    }
    void mouseMove(int x, int y, int buttons, int modifiers) override
    {
        note("move %1 %2 %3 %4", {x, y, buttons, modifiers});
    }
    void mouseWheel(int x, int y, int delta, int modifiers) override
    {
        note("wheel %1 %2 %3 %4", {x, y, delta, modifiers});
    }

    bool isAskedForPictures() const { return m_isAskedForPictures; }
    /// From now on there is another frame whenever a picture is taken.
    void getAhead() { m_isAlwaysAhead = true; }
    /// Once a picture is taken, there is already another frame, of that colour.
    void renderWhenAPictureIsTaken(const QColor &color) { m_next = color; }
    void shareFrames() { m_memory.open(QSize(1000, 1000)); }
    void render(const QColor &color, const QSize &size)
    {
        m_frame = QImage(size, QImage::Format_RGB32);
        m_frame.fill(color);
        int number = 0;
        if (uchar *pixels = m_memory.begin(size)) {
            std::memcpy(pixels, m_frame.constBits(), size_t(m_frame.sizeInBytes()));
            number = int(m_memory.finish());
        }
        Q_EMIT frameRendered(number);
    }
    QStringList notes()
    {
        const QMutexLocker lock(&m_mutex);
        return m_notes;
    }
    void forgetNotes()
    {
        const QMutexLocker lock(&m_mutex);
        m_notes.clear();
    }

private:
    void note(const char *format, std::initializer_list<int> values)
    {
        QString text = QString::fromLatin1(format);
        for (const int value : values)
            text = text.arg(value);
        const QMutexLocker lock(&m_mutex);
        m_notes.append(text);
    }

    oxFrameWriter m_memory;
    QImage m_frame;
    std::atomic<bool> m_isAskedForPictures = false;
    bool m_isAlwaysAhead = false;
    QColor m_next;
    QMutex m_mutex;
    QStringList m_notes;
};

/// A view on a screen with four pixels in the place of one.
class DenseView : public RenderView
{
public:
    using RenderView::RenderView;

protected:
    int metric(PaintDeviceMetric which) const override
    {
        if (which == PdmDevicePixelRatio)
            return 2;
        return which == PdmDevicePixelRatioScaled ? int(2 * devicePixelRatioFScale()) : RenderView::metric(which);
    }
};

} // namespace

/// The view with a main process in another thread, over a real connection.
class tst_RenderView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void showsFrames_data();
    void showsFrames();
    void framesOverTheConnectionLeaveTimeForCalls();
    void frameThatComesWhileAPictureIsTakenIsShown();
    void showsAFrameThatWasRenderedBefore();
    void viewThatIsMadeLaterShowsFramesToo();
    void frameOfAnotherShapeIsNotDistorted();
    void framesGoOnBelowAPanel();
    void asksForItsSize();
    void asksForThePixelsOfADenseScreen();
    void resizingAsksOnceItRests();
    void sendsTheMouse();
    void dragLastsUntilTheLastButtonIsReleased();
    void secondClickMayBecomeADrag();
    void placesAreThoseOfTheFrame();
    void sendsTheKeys();
    void inputForAPanelOverItStaysHere();
    void isQuietWithoutAMainProcess();
    void saysWhatToDoWithoutAMainProcess();
    void followsARestart();
    void pictureThatIsNotShownYetGoesWithTheMainProcess_data();
    void pictureThatIsNotShownYetGoesWithTheMainProcess();
    void pictureThatArrivesAsTheMainProcessGoesIsNotShown();
    void dragEndsWithTheMainProcess();

private:
    void startMain(bool sharesFrames = true);
    void endMain();
    void render(const QColor &color, const QSize &size = QSize(400, 300));
    QColor pixel(int x, int y) const { return m_view->grab().toImage().pixelColor(x, y); }
    template<class Event>
    void send(const Event &event)
    {
        Event copy(event);
        QCoreApplication::sendEvent(m_view.get(), &copy);
    }

    std::unique_ptr<MainThread> m_main;
    std::unique_ptr<Renderer> m_renderer;
    std::unique_ptr<oxRenderService> m_service;
    std::unique_ptr<oxQRPCClient> m_client;
    std::unique_ptr<MainProcess> m_mainProcess;
    std::unique_ptr<RenderView> m_view;
};

void tst_RenderView::init()
{
    m_service = std::make_unique<oxRenderService>();
    m_client = std::make_unique<oxQRPCClient>();
    m_service->setClient(m_client.get());
    m_client->registerService(m_service.get());
    m_mainProcess = std::make_unique<MainProcess>(m_client.get());
    m_view = std::make_unique<RenderView>(m_mainProcess.get(), m_service.get());
    m_view->resize(400, 300);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
}

void tst_RenderView::cleanup()
{
    m_view.reset();
    m_mainProcess.reset();
    m_client.reset();
    endMain();
}

void tst_RenderView::startMain(bool sharesFrames)
{
    QSignalSpy connected(m_mainProcess.get(), &MainProcess::connected);
    m_main = std::make_unique<MainThread>();
    m_renderer = std::make_unique<Renderer>();
    m_main->offer(m_renderer.get());
    if (sharesFrames)
        m_main->run([this] { m_renderer->shareFrames(); });
    QVERIFY(m_client->connectToHost(m_main->address()));
    QTRY_COMPARE(connected.size(), 1);
    QTRY_COMPARE(m_renderer->notes(), QStringList(QStringLiteral("resize 400 300")));
    m_renderer->forgetNotes();
}

void tst_RenderView::endMain()
{
    m_main.reset();
    m_renderer.reset();
}

void tst_RenderView::render(const QColor &color, const QSize &size)
{
    m_main->run([=] { m_renderer->render(color, size); });
}

void tst_RenderView::showsFrames_data()
{
    QTest::addColumn<bool>("sharesFrames");
    QTest::newRow("through shared memory") << true;
    QTest::newRow("over the connection") << false;
}

void tst_RenderView::showsFrames()
{
    QFETCH(bool, sharesFrames);
    startMain(sharesFrames);
    for (const QColor &color : {QColor(Qt::red), QColor(Qt::green), QColor(Qt::blue)}) {
        render(color);
        QTRY_COMPARE(pixel(200, 150), color);
        QCOMPARE(pixel(0, 0), color);
        QCOMPARE(pixel(399, 299), color);
    }
    QCOMPARE(m_renderer->isAskedForPictures(), !sharesFrames);
}

void tst_RenderView::framesOverTheConnectionLeaveTimeForCalls()
{
    startMain(false);
    m_main->run([this] { m_renderer->getAhead(); });
    render(Qt::red);
    QTRY_COMPARE(pixel(200, 150), QColor(Qt::red));
    for (int i = 0; i < 20; ++i)
        QCOMPARE(m_service->getWidth(), 1234);
}

void tst_RenderView::frameThatComesWhileAPictureIsTakenIsShown()
{
    startMain(false);
    m_main->run([this] { m_renderer->renderWhenAPictureIsTaken(Qt::green); });
    render(Qt::red);
    QTRY_COMPARE(pixel(200, 150), QColor(Qt::green));
}

void tst_RenderView::showsAFrameThatWasRenderedBefore()
{
    m_main = std::make_unique<MainThread>();
    m_renderer = std::make_unique<Renderer>();
    m_main->offer(m_renderer.get());
    m_main->run([this] { m_renderer->shareFrames(); });
    render(Qt::cyan);
    QVERIFY(m_client->connectToHost(m_main->address()));
    QTRY_VERIFY(m_view->hasFrame()); // without a look at it, which would paint it
    QCOMPARE(pixel(200, 150), QColor(Qt::cyan));
}

void tst_RenderView::viewThatIsMadeLaterShowsFramesToo()
{
    startMain();
    render(Qt::cyan);
    RenderView late(m_mainProcess.get(), m_service.get());
    QTRY_COMPARE(late.grab().toImage().pixelColor(100, 100), QColor(Qt::cyan));
}

void tst_RenderView::frameOfAnotherShapeIsNotDistorted()
{
    startMain();
    render(Qt::red, QSize(100, 100)); // 300 by 300 in the middle
    QTRY_COMPARE(pixel(200, 150), QColor(Qt::red));
    QVERIFY(pixel(40, 150) != QColor(Qt::red));
    QCOMPARE(pixel(55, 2), QColor(Qt::red));
    QCOMPARE(pixel(345, 297), QColor(Qt::red));
    QVERIFY(pixel(360, 150) != QColor(Qt::red));
}

void tst_RenderView::framesGoOnBelowAPanel()
{
    startMain();
    QWidget panel(m_view.get());
    panel.setStyleSheet(QStringLiteral("background: rgba(0, 0, 0, 50%)"));
    panel.setGeometry(0, 0, 100, 300);
    panel.show();
    for (const QColor &color : {QColor(Qt::red), QColor(Qt::green)}) {
        render(color);
        QTRY_COMPARE(pixel(200, 150), color);
        QVERIFY(pixel(50, 150) != color);
        QVERIFY(pixel(50, 150) != QColor(Qt::black));
    }
}

void tst_RenderView::asksForItsSize()
{
    m_view->resize(500, 350);
    m_main = std::make_unique<MainThread>();
    m_renderer = std::make_unique<Renderer>();
    m_main->offer(m_renderer.get());
    QVERIFY(m_client->connectToHost(m_main->address()));
    QTRY_COMPARE(m_renderer->notes().value(0), QStringLiteral("resize 500 350"));
}

void tst_RenderView::asksForThePixelsOfADenseScreen()
{
    startMain();
    DenseView view(m_mainProcess.get(), m_service.get());
    view.resize(410, 310);
    view.show();
    QTRY_COMPARE(m_renderer->notes(), QStringList(QStringLiteral("resize 820 620")));
}

void tst_RenderView::resizingAsksOnceItRests()
{
    startMain();
    for (int width = 401; width <= 450; ++width) {
        m_view->resize(width, 300);
        QCoreApplication::processEvents();
    }
    QTRY_COMPARE(m_renderer->notes().value(m_renderer->notes().size() - 1), QStringLiteral("resize 450 300"));
    QVERIFY(m_renderer->notes().size() < 50); // one for each that a slow machine lets rest
}

void tst_RenderView::sendsTheMouse()
{
    startMain();
    QTest::mousePress(m_view.get(), Qt::LeftButton, Qt::ShiftModifier, QPoint(10, 20));
    send(QMouseEvent(QEvent::MouseMove, QPointF(30, 40), Qt::NoButton, Qt::LeftButton, Qt::NoModifier));
    QTest::mouseRelease(m_view.get(), Qt::LeftButton, Qt::NoModifier, QPoint(30, 40));
    send(QMouseEvent(QEvent::MouseMove, QPointF(50, 60), Qt::NoButton, Qt::NoButton, Qt::NoModifier)); // no drag
    send(QMouseEvent(QEvent::MouseButtonDblClick, QPointF(5, 6), Qt::RightButton, Qt::RightButton, Qt::NoModifier));
    send(QMouseEvent(QEvent::MouseButtonRelease, QPointF(5, 6), Qt::RightButton, Qt::NoButton, Qt::NoModifier));
    send(QWheelEvent(QPointF(7, 8), QPointF(7, 8), QPoint(), QPoint(0, -120), Qt::NoButton, Qt::ControlModifier,
                     Qt::NoScrollPhase, false));
    QTRY_COMPARE(m_renderer->notes(),
                 QStringList({QStringLiteral("press 10 20 1 %1").arg(int(Qt::ShiftModifier)),
                              QStringLiteral("move 30 40 1 0"), QStringLiteral("release 30 40 1 0"),
                              QStringLiteral("double click 5 6 2 0"), QStringLiteral("release 5 6 2 0"),
                              QStringLiteral("wheel 7 8 -120 %1").arg(int(Qt::ControlModifier))}));
}

void tst_RenderView::dragLastsUntilTheLastButtonIsReleased()
{
    startMain();
    QTest::mousePress(m_view.get(), Qt::LeftButton, Qt::NoModifier, QPoint(10, 20));
    send(QMouseEvent(QEvent::MouseButtonPress, QPointF(10, 20), Qt::RightButton, Qt::LeftButton | Qt::RightButton,
                     Qt::NoModifier));
    send(QMouseEvent(QEvent::MouseButtonRelease, QPointF(10, 20), Qt::RightButton, Qt::LeftButton, Qt::NoModifier));
    send(QMouseEvent(QEvent::MouseMove, QPointF(30, 40), Qt::NoButton, Qt::LeftButton, Qt::NoModifier));
    QTest::mouseRelease(m_view.get(), Qt::LeftButton, Qt::NoModifier, QPoint(30, 40));
    QTRY_COMPARE(m_renderer->notes(),
                 QStringList({QStringLiteral("press 10 20 1 0"), QStringLiteral("press 10 20 2 0"),
                              QStringLiteral("release 10 20 2 0"), QStringLiteral("move 30 40 1 0"),
                              QStringLiteral("release 30 40 1 0")}));
}

void tst_RenderView::secondClickMayBecomeADrag()
{
    startMain();
    send(QMouseEvent(QEvent::MouseButtonDblClick, QPointF(5, 6), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier));
    send(QMouseEvent(QEvent::MouseMove, QPointF(30, 40), Qt::NoButton, Qt::LeftButton, Qt::NoModifier));
    send(QMouseEvent(QEvent::MouseButtonRelease, QPointF(30, 40), Qt::LeftButton, Qt::NoButton, Qt::NoModifier));
    QTRY_COMPARE(m_renderer->notes(),
                 QStringList({QStringLiteral("double click 5 6 1 0"), QStringLiteral("move 30 40 1 0"),
                              QStringLiteral("release 30 40 1 0")}));
}

void tst_RenderView::placesAreThoseOfTheFrame()
{
    startMain();
    render(Qt::red, QSize(100, 100)); // 300 by 300 in the middle
    QTRY_COMPARE(pixel(200, 150), QColor(Qt::red));
    QTest::mousePress(m_view.get(), Qt::LeftButton, Qt::NoModifier, QPoint(80, 60));
    send(QMouseEvent(QEvent::MouseMove, QPointF(350, 300), Qt::NoButton, Qt::LeftButton, Qt::NoModifier));
    QTest::mouseRelease(m_view.get(), Qt::LeftButton, Qt::NoModifier, QPoint(380, 150)); // beside it
    send(QMouseEvent(QEvent::MouseButtonDblClick, QPointF(80, 60), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier));
    send(QMouseEvent(QEvent::MouseButtonDblClick, QPointF(20, 150), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier));
    send(QWheelEvent(QPointF(200, 150), QPointF(200, 150), QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier,
                     Qt::NoScrollPhase, false));
    QTRY_COMPARE(m_renderer->notes(),
                 QStringList({QStringLiteral("press 10 20 1 0"), QStringLiteral("move 100 100 1 0"),
                              QStringLiteral("release 110 50 1 0"), QStringLiteral("double click 10 20 1 0"),
                              QStringLiteral("double click -10 50 1 0"), QStringLiteral("wheel 50 50 120 0")}));
}

void tst_RenderView::sendsTheKeys()
{
    startMain();
    m_view->activateWindow();
    m_view->setFocus();
    QTRY_VERIFY(m_view->hasFocus());
    QTest::keyClick(m_view.get(), Qt::Key_Left);
    QTRY_COMPARE(m_renderer->notes(),
                 QStringList({QStringLiteral("key press %1 0").arg(int(Qt::Key_Left)),
                              QStringLiteral("key release %1 0").arg(int(Qt::Key_Left))}));
}

// A widget that has no use for an event hands it on to the one below.
void tst_RenderView::inputForAPanelOverItStaysHere()
{
    startMain();
    QTest::mouseClick(m_view.get(), Qt::LeftButton, Qt::NoModifier, QPoint(200, 100)); // a drag that has ended
    QTRY_COMPARE(m_renderer->notes().size(), 2);
    m_renderer->forgetNotes();
    QWidget panel(m_view.get());
    panel.setFocusPolicy(Qt::StrongFocus);
    panel.setGeometry(0, 0, 100, 300);
    panel.show();
    m_view->activateWindow();
    panel.setFocus();
    QTRY_VERIFY(panel.hasFocus());
    QTest::mousePress(&panel, Qt::LeftButton, Qt::NoModifier, QPoint(10, 20));
    QMouseEvent move(QEvent::MouseMove, QPointF(150, 40), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&panel, &move);
    QTest::mouseRelease(&panel, Qt::LeftButton, Qt::NoModifier, QPoint(150, 40));
    QTest::mouseDClick(&panel, Qt::LeftButton, Qt::NoModifier, QPoint(10, 20));
    QWheelEvent wheel(QPointF(7, 8), QPointF(7, 8), QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&panel, &wheel);
    QTest::keyClick(&panel, Qt::Key_Left);

    QTest::mousePress(m_view.get(), Qt::LeftButton, Qt::NoModifier, QPoint(200, 100));
    QTRY_COMPARE(m_renderer->notes(), QStringList(QStringLiteral("press 200 100 1 0")));
}

void tst_RenderView::isQuietWithoutAMainProcess()
{
    const Output output = outputOf([this] {
        m_view->activateWindow();
        m_view->setFocus();
        QTest::mouseClick(m_view.get(), Qt::LeftButton);
        QTest::mouseDClick(m_view.get(), Qt::LeftButton);
        QTest::keyClick(m_view.get(), Qt::Key_Left);
        send(QWheelEvent(QPointF(7, 8), QPointF(7, 8), QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier,
                         Qt::NoScrollPhase, false));
        m_view->resize(500, 400);
        QTimer later; // than the view asks for its size
        later.setSingleShot(true);
        later.start(300);
        QTRY_VERIFY(!later.isActive());
    });
    QCOMPARE(output.standardError, QByteArray());
}

void tst_RenderView::saysWhatToDoWithoutAMainProcess()
{
    const QImage before = m_view->grab().toImage();
    m_view->setCommandHint(QStringLiteral("oxMainProcess --session test"));
    const QImage withHint = m_view->grab().toImage();
    QVERIFY(before != withHint);
    startMain();
    QVERIFY(m_view->grab().toImage() != withHint);
    endMain();
    QTRY_COMPARE(m_view->grab().toImage(), withHint);
}

void tst_RenderView::followsARestart()
{
    startMain();
    render(Qt::red);
    QTRY_COMPARE(pixel(200, 150), QColor(Qt::red));
    endMain();
    QTRY_VERIFY(pixel(0, 0) != QColor(Qt::red));
    startMain();
    render(Qt::green);
    QTRY_COMPARE(pixel(200, 150), QColor(Qt::green));
}

void tst_RenderView::pictureThatIsNotShownYetGoesWithTheMainProcess_data()
{
    showsFrames_data();
}

void tst_RenderView::pictureThatIsNotShownYetGoesWithTheMainProcess()
{
    QFETCH(bool, sharesFrames);
    startMain(sharesFrames);
    m_view->hide();
    QSignalSpy available(m_view->findChild<FrameSource *>(), &FrameSource::frameAvailable);
    render(Qt::red);
    QTRY_COMPARE(available.size(), 1);
    endMain();
    QTRY_VERIFY(!m_client->isConnected());
    m_view->show();
    QVERIFY(pixel(0, 0) != QColor(Qt::red));
    QVERIFY(!m_view->hasFrame());
}

void tst_RenderView::pictureThatArrivesAsTheMainProcessGoesIsNotShown()
{
    startMain(false);
    render(Qt::red);
    QTRY_COMPARE(pixel(0, 0), QColor(Qt::red));
    connect(m_client.get(), &oxQRPCClient::answered, m_client.get(), &oxQRPCClient::disconnectFromHost);
    render(Qt::red);
    QTRY_VERIFY(!m_client->isConnected());
    QVERIFY(pixel(0, 0) != QColor(Qt::red));
    QVERIFY(!m_view->hasFrame());
}

void tst_RenderView::dragEndsWithTheMainProcess()
{
    startMain();
    QTest::mousePress(m_view.get(), Qt::LeftButton, Qt::NoModifier, QPoint(10, 20));
    QTRY_COMPARE(m_renderer->notes().size(), 1);
    endMain();
    QTRY_VERIFY(!m_client->isConnected());
    startMain();
    send(QMouseEvent(QEvent::MouseMove, QPointF(30, 40), Qt::NoButton, Qt::LeftButton, Qt::NoModifier));
    send(QMouseEvent(QEvent::MouseButtonRelease, QPointF(30, 40), Qt::LeftButton, Qt::NoButton, Qt::NoModifier));
    QTest::mousePress(m_view.get(), Qt::LeftButton, Qt::NoModifier, QPoint(50, 60)); // would come after them
    QTRY_COMPARE(m_renderer->notes(), QStringList(QStringLiteral("press 50 60 1 0")));
}

QTEST_MAIN(tst_RenderView)
#include "tst_RenderView.moc"
