#include "ViewPage.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>

#include <algorithm>

#include "RenderView.h"
#include "oxPreferencesService.h"

namespace {

const QString plainFloorKey = QStringLiteral("View/PlainFloor");
const QString ballKey = QStringLiteral("View/Ball");

} // namespace

ViewPage::ViewPage(oxPreferencesService *preferences, RenderView *view, QWidget *parent)
    : QWidget(parent)
    , m_preferences(preferences)
    , m_view(view)
    , m_plainFloor(new QCheckBox(tr("Plain, without a grid")))
    , m_ball(new QComboBox)
{
    hide(); // until the preferences show it
    m_ball->addItem(tr("Copper"), QString());
    m_ball->addItem(tr("Jade"), QStringLiteral("#4fae84"));
    m_ball->addItem(tr("Sapphire"), QStringLiteral("#3d7bd4"));

    auto *layout = new QFormLayout(this);
    layout->addRow(tr("Ball"), m_ball);
    layout->addRow(tr("Floor"), m_plainFloor);
    readValues();
    updateView();
}

void ViewPage::readValues()
{
    m_plainFloor->setChecked(m_preferences->getBoolValue(plainFloorKey));
    m_ball->setCurrentIndex(std::max(0, m_ball->findData(m_preferences->getStringValue(ballKey))));
}

void ViewPage::applyChanges()
{
    m_preferences->setBoolValue(plainFloorKey, m_plainFloor->isChecked());
    m_preferences->setStringValue(ballKey, m_ball->currentData().toString());
    updateView();
}

void ViewPage::setDefault()
{
    readValues();
    updateView();
}

void ViewPage::updateView()
{
    m_view->setPlainFloor(m_plainFloor->isChecked());
    m_view->setBallColor(m_ball->currentData().toString());
}
