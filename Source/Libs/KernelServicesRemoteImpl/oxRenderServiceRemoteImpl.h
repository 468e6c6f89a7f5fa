#pragma once

#include <QPointer>
#include <QTabWidget>

#include "oxRenderService.h"
#include "oxkernelservicesremoteimpl_export.h"

class QOXBorderSwipeGestureRecognizer;
class QOXDockWidget;
class QTimer;

/// The render service with an overlay panel: a see-through tab widget that slides in from the
/// left edge of the render view and shows the contents of modules as tabs.
///
/// The render view is the first widget named "RenderWindow" in the main window, or else among
/// the application's top-level widgets. When it is deleted the panel leaves it, hidden, and goes
/// over the next one. A tab is known by its text, the module's name. Without a main window,
/// a render view or a module of the name given operations do nothing. GUI thread only.
class OXKERNELSERVICESREMOTEIMPL_EXPORT oxRenderServiceRemoteImpl : public oxRenderService
{
    Q_OBJECT

public:
    oxRenderServiceRemoteImpl();
    ~oxRenderServiceRemoteImpl() override;

    /// On: lets 20 pixels of the hidden panel peek in over the render view; resting the mouse on
    /// them for 400 ms opens it, even if the panel is sent away meanwhile and the mouse does not
    /// leave it. Off: pulls a panel that peeks in back out.
    void indicateOverlay(bool on) override;

    /// Slides the panel fully in; it takes its size hint's width or a fifth of the view's, what
    /// is more, and the view's height.
    void showOverlay() override;

    /// Slides the panel out, as a double click on it and a swipe to the left do.
    void hideOverlay() override;

    /// Moves the content of the module @p name from its dock into the panel, in the place of the
    /// tab of that name or as a new one. The current index stays.
    void addOverlay(const QString &name) override;

    /// Moves the content back into the module's dock.
    void subOverlay(const QString &name) override;

    /// Replaces the tab's content by the dock's, when the module has got a new one.
    void updateOverlay(const QString &name) override;

    bool eventFilter(QObject *watched, QEvent *event) override;

private Q_SLOTS:
    void twTimerFinished();

private:
    enum OverlayState { Hidden = 0, Indicated = 1, Shown = 2 };

    void putOver(QWidget *view);
    void leaveRenderView(const QObject *view);
    void slideOut(int startX, int durationMs);
    void animateOverlay(int startX, int endX, int durationMs);
    QOXDockWidget *getDockWidget(const QString &name) const;
    int findTab(const QString &name) const;

    QOXBorderSwipeGestureRecognizer *swipeRecognizer = nullptr; ///< Qt's gesture manager owns it
    QPointer<QTabWidget> panel;                                 ///< owned, also while it is over a render view
    QTimer *hoverTimer = nullptr;
    int overlayState = Hidden;
};
