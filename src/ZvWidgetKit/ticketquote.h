#pragma once

class ZvUBTopFive;

namespace Ui {
class DealWidget_BuySell;
}

// The five levels beside the order ticket, with the limits, the latest price and its change.
namespace ticketquote {

using Form = Ui::DealWidget_BuySell;

// Gives the limits the colours that they keep.
void applyStyle(const Form &form);

void write(const Form &form, const ZvUBTopFive &quote);

// Colours all prices by the reference, red above and green below it, and the change by its sign.
void recolor(const Form &form, float reference);

// Shows five levels a side, or three.
void showAllLevels(const Form &form, bool all);

} // namespace ticketquote
