#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

class MainWindow;

/// Shows without a user what a user can do, and saves a picture of each stop: panels that are
/// clicked, a model that loads and uploads, the overlay peeking in and shown with panels in it, the
/// preferences. Needs a main process.
class Tour : public QObject
{
    Q_OBJECT

public:
    Tour(MainWindow *window, const QString &folder);

    void start();

Q_SIGNALS:
    /// @param allDone whether the model was loaded and every picture saved
    void finished(bool allDone);

private:
    struct Stop
    {
        std::function<void()> arrive;
        int milliseconds; ///< until all has settled
        QString picture;  ///< none where empty
    };

    void goOn();
    void clickPanels();
    void movePanelsToOverlay();
    void loadModel();
    void save(const QString &picture);

    MainWindow *m_window;
    QString m_folder;
    QList<Stop> m_stops;
    QTimer m_settling;
    bool m_allDone = true;
};
