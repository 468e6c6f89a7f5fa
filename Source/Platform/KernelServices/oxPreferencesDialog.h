#pragma once

#include <QDialog>
#include <QPointer>

class QAbstractButton;
class QDialogButtonBox;
class QLabel;
class QTabWidget;

/// The window of oxPreferencesService: a tab for each page.
///
/// The pages are borrowed: each goes back to the parent that it had, hidden, when it is removed
/// and when the dialog closes or is deleted. Where that parent is gone by then, the page goes as
/// well. The tab of a page that is deleted goes with it.
class oxPreferencesDialog : public QDialog
{
    Q_OBJECT

public:
    explicit oxPreferencesDialog(QWidget *parent);
    ~oxPreferencesDialog() override;

    void addPage(const QString &title, QWidget *page);
    void removePage(QWidget *page);

    void done(int result) override;

Q_SIGNALS:
    void applyRequested();
    void defaultRequested(QWidget *page);

private:
    struct Loan
    {
        QPointer<QWidget> page;
        bool hasParent;
        QPointer<QWidget> parent;
        Qt::WindowFlags flags;
    };

    void takeClick(QAbstractButton *button);
    void giveBack(const Loan &loan);
    bool isOver(const QWidget *widget) const;
    void showWhatThereIs();

    QList<Loan> m_loans;
    QTabWidget *m_tabs;
    QLabel *m_nothing;
    QDialogButtonBox *m_buttons;
};
