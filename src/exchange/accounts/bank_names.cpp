#include "exchange/accounts/bank_names.h"

#include <algorithm>

namespace zvx {

const std::array<Bank, 6> &knownBanks()
{
    static constexpr std::array<Bank, 6> banks = {{
        {"chenghu", "澄湖银行"},
        {"lanchuan", "岚川银行"},
        {"yunting", "云汀银行"},
        {"qingyu", "青屿银行"},
        {"wangshu", "望舒银行"},
        {"luming", "鹿鸣银行"},
    }};
    return banks;
}

const Bank *findBank(std::string_view id)
{
    const auto &banks = knownBanks();
    const auto found = std::find_if(banks.begin(), banks.end(),
                                    [id](const Bank &bank) { return bank.id == id; });
    return found == banks.end() ? nullptr : &*found;
}

} // namespace zvx
