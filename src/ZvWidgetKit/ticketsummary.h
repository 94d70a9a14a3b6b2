#pragma once

class ZvUBCapInfo;
class ZvUBGatherInfo;

namespace Ui {
class DealWidget_BuySell;
}

// The sums beside the tables below the order ticket.
namespace ticketsummary {

using Form = Ui::DealWidget_BuySell;

// What the account holds and has.
void write(const Form &form, const ZvUBCapInfo &info);

// What it has dealt.
void write(const Form &form, const ZvUBGatherInfo &info);

} // namespace ticketsummary
