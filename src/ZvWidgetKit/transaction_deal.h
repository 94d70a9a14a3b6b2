#pragma once

#include <QList>
#include <QWidget>

#include <memory>

class DealWidget_AllWidgets;
class QPushButton;

namespace Ui {
class TransactionPanel;
}

// The panel in which a user trades: a column of buttons beside the page that the checked one
// stands for. A button acts when the mouse is released over it; its check mark is set here alone.
//
// The main buttons stand for a page each, except the one of the queries, which opens and closes the
// list of its sub-buttons. The sub-button that was used last is remembered.
class Transaction_Deal : public QWidget
{
    Q_OBJECT

public:
    explicit Transaction_Deal(QWidget *parent = nullptr);
    ~Transaction_Deal() override;

    bool eventFilter(QObject *watched, QEvent *event) override;

    // The buy page in front, the queries closed, the record of deals remembered.
    void resetNavigation();

    // Asks all lists for their first page.
    void reloadPages();

    void resetAfterLogin();

    // Does nothing for a button that has no page.
    void showPageOfButton(QPushButton *button);

private:
    void setupNavigationButtons();
    void applyStyle();
    void onTypeButtonReleased(QPushButton *button);
    void onSelectButtonReleased(QPushButton *button);

    std::unique_ptr<Ui::TransactionPanel> ui;
    QList<QPushButton *> m_typeButtons;
    QList<QPushButton *> m_selectButtons;
    DealWidget_AllWidgets *m_allWidgets;
    QPushButton *m_currentTypeButton;
    QPushButton *m_currentSelectButton; // stays while another main button is in front
};
