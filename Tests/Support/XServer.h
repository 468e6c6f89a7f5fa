#pragma once

#include <QByteArray>
#include <QProcess>
#include <QTemporaryDir>

class QPoint;
class QWidget;

/// A real X server, for a test with real input or with real pictures.
///
/// Make one before QApplication, or before another process is started, which then uses it. Ends
/// with the object.
class XServer
{
public:
    enum WindowManager { WithWindowManager, WithoutWindowManager };

    explicit XServer(WindowManager windowManager = WithWindowManager);
    /// @param windowManager a program that tells other programs how many desktops it has; may be empty
    explicit XServer(const QString &windowManager);
    ~XServer();

private:
    Q_DISABLE_COPY(XServer)

    void startWindowManager(const QString &program);

    // Goes with this process even when that crashes.
    class Child : public QProcess
    {
    public:
        void startAndAwaitOutput(const QString &program, const QStringList &arguments);

    protected:
        void setupChildProcess() override;
    };

    QTemporaryDir m_folder; // in place of the user's settings
    Child m_server;
    Child m_windowManager;
};

/// A user's hand on the X server's mouse. Each step goes through the server, as a device's events do.
class Hand
{
public:
    /// Steps as xdotool takes them, such as {"mousemove", "10", "20", "click", "1"}. Waits for their end while
    /// the application goes on.
    static void perform(const QStringList &steps);

    static void moveTo(const QPoint &place);
    /// Once the widget's window is on the screen, wherever the window manager puts it.
    static void click(QWidget *widget, const QPoint &place);
    static void doubleClick(const QPoint &place);
    /// With the button held down.
    static void drag(const QPoint &from, const QPoint &to);

    /// From one place to another, after a while.
    static void moveToAndOn(const QPoint &place, int milliseconds, const QPoint &next);
};
