#include "exchange/service/platform_pages.h"

#include "exchange/service/html_text.h"

namespace zvx {

namespace {

constexpr std::string_view style
    = R"(html { background: #16181c; color: #d8dade; color-scheme: dark;
       -webkit-text-size-adjust: 100%; text-size-adjust: 100%; }
body { max-width: 42em; margin: 0 auto; padding: 2em 1.25em 4em; line-height: 1.8;
       font-family: "Noto Sans CJK SC", "Microsoft YaHei", "PingFang SC", sans-serif; }
h1 { color: #ffffff; font-size: 1.6em; line-height: 1.4; }
h2 { color: #ffffff; font-size: 1.1em; margin: 2em 0 0.5em; }
p, li { margin: 0.5em 0; }
a { color: #6bb2ff; }
footer { margin-top: 3em; padding-top: 1em; border-top: 1px solid #3a3d44; color: #9a9da3; }
main { max-width: 26em; margin: 0 auto; }
main h1 { margin: 0 0 0.3em; }
main + footer { max-width: 26em; margin-left: auto; margin-right: auto; }
.hint a { white-space: nowrap; }
.who, .hint, .back { color: #9a9da3; font-size: 0.9em; }
.notice { margin: 1em 0; padding: 0.7em 1em; border-left: 4px solid #e73c3c;
          background: #2d2023; color: #ffdcdc; }
.good { border-color: #3d9a63; background: #1c2821; color: #d5f2e0; }
dl { display: grid; grid-template-columns: max-content 1fr; gap: 0.4em 1em; margin: 1.5em 0;
     padding: 1em 0; border: solid #3a3d44; border-width: 1px 0; }
dt { color: #9a9da3; }
dd { margin: 0; color: #ffffff; text-align: right; overflow-wrap: anywhere; }
label { display: block; margin: 1.3em 0 0.3em; color: #ffffff; }
input, select { display: block; box-sizing: border-box; width: 100%; height: 3em; padding: 0 0.8em;
                border: 1px solid #565a63; border-radius: 6px; background: #22252b; color: #ffffff;
                font: inherit; line-height: 1.4; }
input::placeholder { color: #8b8f98; }
input:focus, select:focus, button:focus { outline: 2px solid #6bb2ff; outline-offset: 1px; }
input[aria-invalid], select[aria-invalid] { border-color: #ff7b7b; }
.fault { margin: 0.35em 0 0; color: #ff8f8f; font-size: 0.9em; }
button { display: block; width: 100%; min-height: 3em; margin: 1.8em 0 0; padding: 0.5em;
         border: 0; border-radius: 6px; background: #d32f2f; color: #ffffff;
         font: inherit; font-weight: bold; cursor: pointer; }
button.quiet { margin-top: 0.9em; border: 1px solid #565a63; background: none; color: #6bb2ff;
               font-weight: normal; }
.back { margin-top: 1.5em; text-align: center; }
@media print { html { background: none; color: #000000; } h1, h2 { color: #000000; } }
)";

constexpr std::string_view agreement = R"(<h1>用户服务协议</h1>
<p>本协议由您与{platform}交易中心（以下称“本平台”）订立，约定您注册账户、使用行情与交易服务时双方的权利和义务。
注册账户即表示您已阅读、理解并同意本协议与<a href="risk.html">《风险揭示书》</a>的全部内容。</p>
<h2>一、账户</h2>
<p>账户以您本人的手机号码注册，一个手机号码在本平台只有一个账户。账户仅限本人使用，不得转让、出借或代他人交易。</p>
<p>一个账户同一时间只能在一处登录：在别处登录后，先前的登录随即失效，客户端会提示您。若非本人所为，请立即修改密码。</p>
<h2>二、密码与校验码</h2>
<p>密码由您自行设定并保管，本平台只保存无法还原的校验值。校验码以短信发送到您的手机，限时有效，只能使用一次。</p>
<p>本平台不会以任何理由向您索取密码或校验码。连续输错后，登录与校验会被暂时限制，以保护您的账户。</p>
<h2>三、行情与委托</h2>
<p>行情来自本平台实际的委托与成交，以服务端记录为准。网络延迟可能使您看到的行情稍晚于实际。</p>
<p>委托经服务端确认后生效，按价格优先、时间优先的原则撮合。已成交的部分不能撤销，未成交的部分可以在当日撤单，
当日收市仍未成交的委托自动失效。超出涨跌幅限制、资金或持有数量不足的委托会被拒绝，并说明原因。</p>
<h2>四、资金与藏品</h2>
<p>买入委托冻结相应资金与手续费，卖出委托冻结相应藏品；成交、撤单或失效后，未使用的部分随即解冻。
各交易市场的资金与持有相互独立。</p>
<h2>五、费用</h2>
<p>成交后按成交金额的一定比例向买卖双方收取手续费，费率可在客户端的账户信息中查看。</p>
<h2>六、个人信息</h2>
<p>本平台保存您的手机号码、推荐人、自选、委托、成交与资金记录，仅用于向您提供服务和依法留存，不向无关的第三方提供。</p>
<h2>七、服务的中断</h2>
<p>设备、网络或电力故障以及例行维护可能使服务中断。得到成功答复的委托均已保存；没有得到答复的操作，
客户端会自动查明结果，请勿重复提交。</p>
<h2>八、协议的变更</h2>
<p>本协议变更时，本平台会在客户端的公告中告知。变更后继续使用服务即视为同意；不同意的，可以停止使用并取出资金与藏品。</p>
)";

constexpr std::string_view risk = R"(<h1>风险揭示书</h1>
<p>藏品交易有风险。在{platform}交易中心（以下称“本平台”）开始交易之前，请仔细阅读以下内容，
并根据自己的经济状况和承受能力决定是否参与。</p>
<h2>一、价格波动的风险</h2>
<p>藏品的价格受供求、题材、发行与存世数量以及市场情绪的影响，可能在短时间内大幅涨跌。过去的价格不代表将来的价格，
您可能损失投入的部分乃至全部资金。</p>
<h2>二、流动性的风险</h2>
<p>部分藏品成交稀少。您希望卖出时，可能没有买方，或只能以明显低于预期的价格成交；受涨跌幅限制，也可能当日无法成交。</p>
<h2>三、藏品本身的风险</h2>
<p>藏品的价值与品相、保存条件和鉴定意见有关，这些因素可能变化。停牌、退市或交易规则的调整也会影响藏品的价格和交易。</p>
<h2>四、委托的风险</h2>
<p>填错方向、价格或数量的委托一经成交即不可撤销。请在提交之前核对，尤其是预先准备好的委托。</p>
<h2>五、技术的风险</h2>
<p>网络、设备或软件的故障可能使行情延迟、委托无法送达或答复不能及时返回。客户端会标明行情是否连续，
请在连接中断时谨慎判断，并在恢复后核对委托与成交。</p>
<h2>六、账户安全的风险</h2>
<p>密码、校验码泄露，或在他人的设备上登录，可能造成资金与藏品的损失。请妥善保管，并定期更换密码。</p>
<h2>七、政策的风险</h2>
<p>法律法规、监管要求或税费政策的变化可能影响交易的进行和藏品的价格。</p>
<p>本揭示书不能列举全部风险。请只用自己能够承受损失的资金参与交易，并为自己的交易决定负责。
另请阅读<a href="agreement.html">《用户服务协议》</a>。</p>
)";

HttpFragment makePage(std::string_view title, std::string_view text, std::string_view platform)
{
    return std::make_shared<const std::string>(
        htmlPage(title, platform, filledHtml(text, {{"platform", platform}})));
}

} // namespace

PlatformPages::PlatformPages(std::string_view name)
    : m_agreement(makePage("用户服务协议", agreement, name)),
      m_risk(makePage("风险揭示书", risk, name)),
      m_style(std::make_shared<const std::string>(style))
{
}

std::optional<HttpAnswer> PlatformPages::page(std::string_view name) const
{
    HttpAnswer answer;
    answer.contentType = "text/html; charset=utf-8";
    answer.contentSecurity = "default-src 'none'; style-src 'self'; base-uri 'none'; "
                             "form-action 'none'; frame-ancestors 'none'";
    if (name == "agreement.html") {
        answer.body = {m_agreement};
    } else if (name == "risk.html") {
        answer.body = {m_risk};
    } else if (name == "page.css") {
        answer.contentType = "text/css; charset=utf-8";
        answer.body = {m_style};
    } else {
        return std::nullopt;
    }
    return answer;
}

} // namespace zvx
