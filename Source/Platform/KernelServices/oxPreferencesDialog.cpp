#include "oxPreferencesDialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include <algorithm>

oxPreferencesDialog::oxPreferencesDialog(QWidget *parent)
    : QDialog(parent)
    , m_tabs(new QTabWidget)
    , m_nothing(new QLabel(tr("There are no preferences.")))
    , m_buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Apply
                                     | QDialogButtonBox::RestoreDefaults))
{
    setWindowTitle(tr("Preferences"));
    setAttribute(Qt::WA_DeleteOnClose);
    setMinimumWidth(420);
    m_nothing->setAlignment(Qt::AlignCenter);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs);
    layout->addWidget(m_nothing);
    layout->addWidget(m_buttons);

    connect(m_buttons, &QDialogButtonBox::clicked, this, &oxPreferencesDialog::takeClick);
    connect(m_tabs, &QTabWidget::currentChanged, this, &oxPreferencesDialog::showWhatThereIs);
    showWhatThereIs();
}

oxPreferencesDialog::~oxPreferencesDialog()
{
    // With loans left, the dialog dies with a widget that it is over. Pages of that one die, too.
    for (const Loan &loan : qAsConst(m_loans)) {
        if (isOver(loan.parent))
            delete loan.page;
        else
            giveBack(loan);
    }
}

void oxPreferencesDialog::addPage(const QString &title, QWidget *page)
{
    m_loans.append({page, page->parentWidget() != nullptr, page->parentWidget(), page->windowFlags()});
    QString text = title;
    text.replace(QLatin1Char('&'), QLatin1String("&&"));
    m_tabs->addTab(page, text);
    showWhatThereIs();
}

void oxPreferencesDialog::removePage(QWidget *page)
{
    const auto loan = std::find_if(m_loans.begin(), m_loans.end(), [page](const Loan &l) { return l.page == page; });
    if (loan == m_loans.end())
        return;
    giveBack(m_loans.takeAt(static_cast<int>(loan - m_loans.begin())));
}

void oxPreferencesDialog::done(int result)
{
    hide();
    while (!m_loans.isEmpty())
        giveBack(m_loans.takeFirst());
    QDialog::done(result);
}

void oxPreferencesDialog::takeClick(QAbstractButton *button)
{
    switch (m_buttons->standardButton(button)) {
    case QDialogButtonBox::Ok:
        Q_EMIT applyRequested();
        accept();
        break;
    case QDialogButtonBox::Apply:
        Q_EMIT applyRequested();
        break;
    case QDialogButtonBox::RestoreDefaults:
        Q_EMIT defaultRequested(m_tabs->currentWidget());
        break;
    default:
        reject();
        break;
    }
}

// A page that was deleted, or that its owner has put elsewhere meanwhile, is not there to give back.
void oxPreferencesDialog::giveBack(const Loan &loan)
{
    if (!loan.page || m_tabs->indexOf(loan.page) < 0)
        return;
    if (loan.hasParent && !loan.parent)
        delete loan.page;
    else
        loan.page->setParent(loan.parent, loan.flags);
}

bool oxPreferencesDialog::isOver(const QWidget *widget) const
{
    const QWidget *ancestor = parentWidget();
    while (ancestor && ancestor != widget)
        ancestor = ancestor->parentWidget();
    return ancestor != nullptr;
}

void oxPreferencesDialog::showWhatThereIs()
{
    const bool isEmpty = m_tabs->count() == 0;
    m_tabs->setHidden(isEmpty);
    m_nothing->setVisible(isEmpty);
    for (const auto button : {QDialogButtonBox::Apply, QDialogButtonBox::RestoreDefaults})
        m_buttons->button(button)->setDisabled(isEmpty);
}
