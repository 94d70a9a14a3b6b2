#include "loginbench.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserverengine.h"

#include <QtTest/QtTest>

namespace zvtest {

const QStringList loginEditNames{
    QStringLiteral("lineEdit_login_phoneNumber"),
    QStringLiteral("lineEdit_login_password"),
    QStringLiteral("lineEdit_changePassword_PhoneNumber"),
    QStringLiteral("lineEdit_changePassword_verificationCode"),
    QStringLiteral("lineEdit_changePassword_password"),
    QStringLiteral("lineEdit_changePassword_confirmPassword"),
    QStringLiteral("lineEdit_register_PhoneNumber"),
    QStringLiteral("lineEdit_register_verificationCode"),
    QStringLiteral("lineEdit_register_password"),
    QStringLiteral("lineEdit_register_confirmPassword"),
    QStringLiteral("lineEdit_register_PhoneNumber_referee"),
};

const QStringList loginButtonNames{
    QStringLiteral("pushButton_close"),
    QStringLiteral("pushButton_return"),
    QStringLiteral("pushButton_login"),
    QStringLiteral("pushButton_login_immediatelyRegister"),
    QStringLiteral("pushButton_login_immediatelyChange"),
    QStringLiteral("pushButton_changePassword"),
    QStringLiteral("pushButton_changePassword_getVerificationCode"),
    QStringLiteral("pushButton_register"),
    QStringLiteral("pushButton_register_getVerificationCode"),
    QStringLiteral("pushButton_register_icon"),
};

LoginBench::LoginBench()
{
    ZvServerAccessManager::getZvServerAccessManagerInstance()->setUrlPrefix(
        QStringLiteral("/ch/youbika/"));
    dialog = new LoginDialog(nullptr);
    dialog->show();
    if (!QTest::qWaitForWindowActive(dialog))
        QTest::qFail("the sign-in dialog does not become the active window", __FILE__, __LINE__);
}

LoginBench::~LoginBench()
{
    // The dialog goes first: it would show the answers in boxes.
    delete dialog;
    endWhatIsUnderWay();
    ZvServerEngine::getZvServerEngineInstance()->startUnloggedEngine();
}

// The kit sends one action after the other, and its queue lives longer than a test.
void LoginBench::endWhatIsUnderWay()
{
    const QByteArray refusal = ZvScriptedTransport::refusal("refused", QStringLiteral("已结束"));
    for (const QString &path :
         {zvPath_login, zvPath_reg, zvPath_reg_send, zvPath_forget_validate, zvPath_forget_send}) {
        exchange()->always(path, [refusal](const ZvRequest &) { return refusal; });
        while (exchange()->openCount(path) > 0)
            exchange()->answer(path, refusal);
    }
    settle();
}

void LoginBench::click(const QString &name)
{
    QVERIFY2(button(name)->isVisible(), qPrintable(name));
    QTest::mouseClick(button(name), Qt::LeftButton);
}

void LoginBench::fill(const QList<QPair<QString, QString>> &texts)
{
    for (const auto &text : texts)
        edit(text.first)->setText(text.second);
}

QStringList LoginBench::prompts(const QString &page) const
{
    QStringList shown;
    for (const QLabel *prompt : widget(page)->findChildren<QLabel *>()) {
        if (prompt->objectName().contains(QLatin1String("Prompt"))
            && !prompt->text().trimmed().isEmpty())
            shown << prompt->objectName() + QStringLiteral(": ") + prompt->text();
    }
    return shown;
}

QStringList LoginBench::defaultButtons() const
{
    QStringList names;
    for (const QPushButton *each : dialog->findChildren<QPushButton *>()) {
        if (each->isDefault())
            names << each->objectName();
    }
    return names;
}

} // namespace zvtest
