#include "exchange/accounts/account_request.h"

#include "exchange/accounts/account_rules.h"
#include "exchange/accounts/bank_names.h"
#include "exchange/accounts/card_rules.h"

#include <algorithm>
#include <initializer_list>

namespace zvx {
namespace {

constexpr std::int64_t kPageMost = 1'000;

AccountStatus firstOf(std::initializer_list<AccountStatus> findings)
{
    const auto bad = [](AccountStatus status) { return status != AccountStatus::Done; };
    const auto found = std::find_if(findings.begin(), findings.end(), bad);
    return found == findings.end() ? AccountStatus::Done : *found;
}

AccountStatus unless(bool good, AccountStatus status)
{
    return good ? AccountStatus::Done : status;
}

AccountStatus keyed(ActionKey key)
{
    return unless(!key.isNull(), AccountStatus::BadKey);
}

} // namespace

AccountStatus problemOf(const SignInRequest &request)
{
    return firstOf({keyed(request.key), unless(isPhone(request.phone), AccountStatus::BadPhone),
                    unless(isPassword(request.password.text()), AccountStatus::BadPassword),
                    unless(!peerGroup(request.peer).empty(), AccountStatus::BadPeer)});
}

AccountStatus problemOf(const CodeRequest &request)
{
    // Codes of links are sent by what is prepared at one.
    return firstOf({keyed(request.key), unless(isPhone(request.phone), AccountStatus::BadPhone),
                    unless(request.purpose != CodePurpose::Link, AccountStatus::BadCode),
                    unless(!peerGroup(request.peer).empty(), AccountStatus::BadPeer)});
}

AccountStatus problemOf(const RegisterRequest &request)
{
    return firstOf(
        {keyed(request.key),
         unless(request.referee.empty() || isPhone(request.referee), AccountStatus::BadReferee),
         unless(isPhone(request.phone), AccountStatus::BadPhone),
         unless(isPassword(request.password.text()), AccountStatus::BadPassword),
         unless(isCode(CodePurpose::Register, request.code.text()), AccountStatus::BadCode),
         unless(!peerGroup(request.peer).empty(), AccountStatus::BadPeer)});
}

AccountStatus problemOf(const ResetRequest &request)
{
    return firstOf({keyed(request.key), unless(isPhone(request.phone), AccountStatus::BadPhone),
                    unless(isPassword(request.password.text()), AccountStatus::BadPassword),
                    unless(isCode(CodePurpose::Reset, request.code.text()), AccountStatus::BadCode),
                    unless(!peerGroup(request.peer).empty(), AccountStatus::BadPeer)});
}

AccountStatus problemOf(const MoneyCodeCheck &request)
{
    return firstOf(
        {keyed(request.key),
         unless(request.phone.empty() || isPhone(request.phone), AccountStatus::BadPhone),
         unless(isCode(CodePurpose::Money, request.code.text()), AccountStatus::BadCode),
         unless(!peerGroup(request.peer).empty(), AccountStatus::BadPeer)});
}

AccountStatus problemOf(const FavouriteChange &request)
{
    return firstOf({keyed(request.key),
                    unless(isMarketPrefix(request.market) && request.collection.value() > 0,
                           AccountStatus::BadMarket)});
}

AccountStatus problemOf(const ResolveRequest &request)
{
    return keyed(request.name.key);
}

AccountStatus problemOf(const LinkRequest &request)
{
    return unless(isMarketPrefix(request.market), AccountStatus::BadMarket);
}

AccountStatus problemOf(const CardRequest &request)
{
    return firstOf(
        {unless(findBank(request.bank) != nullptr, AccountStatus::BadBank),
         unless(isHolderName(request.holder), AccountStatus::BadHolder),
         unless(!cardDigits(request.number.text()).empty(), AccountStatus::BadCardNumber),
         unless(!peerGroup(request.peer).empty(), AccountStatus::BadPeer)});
}

AccountStatus problemOf(const AmountRequest &request)
{
    return firstOf(
        {unless(request.amount.value() > 0 && request.amount.inRange(), AccountStatus::BadAmount),
         unless(!peerGroup(request.peer).empty(), AccountStatus::BadPeer)});
}

AccountStatus problemOf(const LinkCodeRequest &request)
{
    return unless(!peerGroup(request.peer).empty(), AccountStatus::BadPeer);
}

AccountStatus problemOf(const LinkConfirmation &request)
{
    return unless(!peerGroup(request.peer).empty(), AccountStatus::BadPeer);
}

AccountStatus problemOf(const LinkReturn &)
{
    return AccountStatus::Done;
}

AccountStatus problemOf(const FavouritesQuery &query)
{
    return firstOf({unless(isMarketPrefix(query.market), AccountStatus::BadMarket),
                    unless(query.page >= 1 && query.size >= 1 && query.size <= kPageMost,
                           AccountStatus::BadPage)});
}

AccountStatus problemOf(const ProfileQuery &)
{
    return AccountStatus::Done;
}

} // namespace zvx
