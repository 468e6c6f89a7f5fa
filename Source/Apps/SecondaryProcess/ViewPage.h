#pragma once

#include <QWidget>

class QCheckBox;
class QComboBox;
class RenderView;
class oxPreferencesService;

/// The page "View" of the preferences: how the render view looks while no picture arrives.
///
/// Keeps "View/PlainFloor" (bool) and "View/Ball" (the colour's name).
class ViewPage : public QWidget
{
    Q_OBJECT

public:
    /// Applies the kept values to @p view. Both have to outlive the page.
    ViewPage(oxPreferencesService *preferences, RenderView *view, QWidget *parent);

public Q_SLOTS:
    // Called by the preferences service.
    void readValues();
    void applyChanges();
    void setDefault();

private:
    void updateView();

    oxPreferencesService *m_preferences;
    RenderView *m_view;
    QCheckBox *m_plainFloor;
    QComboBox *m_ball;
};
