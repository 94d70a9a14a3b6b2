#pragma once

#include <QString>
#include <QStringList>

// What stands on the order ticket at the moment when an order is made of it.
struct TicketOrder {
    QString code;
    QString name;
    float price = 0; // yuan
    int count = 0; // pieces
};

// What an order must keep to.
struct TicketLimits {
    QStringList codes;
    QStringList names;
    float lowestPrice = 0; // yuan
    float highestPrice = 0;
    int largestCount = 0; // pieces
};

// The words for the first thing that is wrong with an order; empty when nothing is. Code and name
// are checked each by itself, not for belonging together.
QString faultOf(const TicketOrder &order, const TicketLimits &limits);

// What is asked before an order leaves, as rich text.
QString confirmationOf(const TicketOrder &order);

// How many pieces the money buys at this price, each with its fee and rounded up to the fen. The
// money and the price are yuan, the rate is a part of the amount. -1 or less for money below that
// of minus one piece.
int buyableCount(float money, float price, double feeRate);
