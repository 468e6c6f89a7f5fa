#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

class MainWindow;

/// Shows without a user what a user can do, and saves a picture of each stop: the overlay peeking
/// in and shown with panels in it, a file that loads and uploads, the preferences.
class Tour : public QObject
{
    Q_OBJECT

public:
    Tour(MainWindow *window, const QString &folder);

    void start();

Q_SIGNALS:
    /// @param allSaved whether every picture could be written
    void finished(bool allSaved);

private:
    struct Stop
    {
        std::function<void()> arrive;
        int milliseconds; ///< until all has settled
        QString picture;  ///< none where empty
    };

    void goOn();
    void movePanelsToOverlay();
    void loadFile();
    void pauseAndSave(const QString &picture);
    void save(const QString &picture);

    MainWindow *m_window;
    QString m_folder;
    QList<Stop> m_stops;
    QTimer m_settling;
    bool m_allSaved = true;
};
