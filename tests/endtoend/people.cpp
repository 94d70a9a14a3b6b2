#include "endtoend/people.h"

#include "endtoend/programs.h"

#include "BreltWidgetToolKit/breltframlessmessagebox.h"
#include "ZvWidgetKit/logindialog.h"
#include "ZvWidgetKit/titlebar.h"
#include "ZvWidgetKit/zvguidetabitem.h"

#include <QApplication>
#include <QEventLoop>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QUrlQuery>
#include <QUuid>

namespace endtoend {

BoxReader::BoxReader(std::function<void()> before) : m_before(std::move(before))
{
    QObject::connect(&m_timer, &QTimer::timeout, [this] { look(); });
    m_timer.start(20);
}

void BoxReader::look()
{
    const QPointer<BreltFramlessMessageBox> box
        = qobject_cast<BreltFramlessMessageBox *>(QApplication::activeModalWidget());
    if (!box || m_isLooking)
        return;
    const QLabel *label = box->findChild<QLabel *>();
    m_texts.append(label ? label->text() : QString());
    m_isLooking = true;
    if (m_before)
        m_before();
    m_isLooking = false;
    QPushButton *confirm = box ? box->findChild<QPushButton *>() : nullptr;
    if (confirm)
        QTest::mouseClick(confirm, Qt::LeftButton);
}

QString lastCode(const StateFolder &state, const QString &phone, int digits)
{
    QProcess outbox;
    outbox.start(QStringLiteral(ZV_EXCHANGE_PROGRAM),
                 {QStringLiteral("outbox"), QStringLiteral("--state"), state.path()});
    if (!outbox.waitForFinished(patience))
        return QString();
    const QRegularExpression code(QStringLiteral("(?<![0-9])([0-9]{%1})(?![0-9])").arg(digits));
    QString found;
    for (const QString &line :
         QString::fromUtf8(outbox.readAllStandardOutput()).split(QLatin1Char('\n'))) {
        const int place = line.indexOf(phone);
        if (place < 0)
            continue;
        const QRegularExpressionMatch match = code.match(line.mid(place + phone.size()));
        if (match.hasMatch())
            found = match.captured(1);
    }
    return found;
}

QString otherCode(const QString &code)
{
    const QChar last
        = code.back() == QLatin1Char('9') ? QLatin1Char('0') : QChar(code.back().unicode() + 1);
    return code.left(code.size() - 1) + last;
}

QJsonObject signIn(const QUrl &exchange, const QString &server, const QString &phone,
                   const QString &password)
{
    QUrl address(exchange);
    address.setPath(server + QStringLiteral("login.html"));
    QNetworkRequest request(address);
    request.setHeader(QNetworkRequest::ContentTypeHeader,
                      QStringLiteral("application/x-www-form-urlencoded"));
    QUrlQuery form;
    const QString key = QUuid::createUuid().toString(QUuid::Id128);
    form.addQueryItem(QStringLiteral("protocol"), QStringLiteral("1"));
    form.addQueryItem(QStringLiteral("key"), key);
    form.addQueryItem(QStringLiteral("client"), key.left(16));
    form.addQueryItem(QStringLiteral("phone"), phone);
    form.addQueryItem(QStringLiteral("password"), password);
    QNetworkAccessManager manager;
    QNetworkReply *reply = manager.post(request, form.toString(QUrl::FullyEncoded).toUtf8());
    until([reply] { return reply->isFinished(); });
    return QJsonDocument::fromJson(reply->readAll()).object();
}

bool registerAccount(const StateFolder &state, const QUrl &exchange, const QString &phone,
                     const QString &password, const QString &server)
{
    const auto ask = [&](const QString &path, const QString &fields) {
        const QString key = QUuid::createUuid().toString(QUuid::Id128);
        const QString form = QStringLiteral("protocol=1&key=%1&phone=%2%3").arg(key, phone, fields);
        return post(exchange, server + path, form.toUtf8())
                   .value(QStringLiteral("status"))
                   .toString()
            == QLatin1String("ok");
    };
    return ask(QStringLiteral("reg/send.html"), QString())
        && ask(QStringLiteral("reg.html"),
               QStringLiteral("&referee=&password=%1&code=%2")
                   .arg(password, lastCode(state, phone, 4)));
}

void askForSignIn(const QWidget &window)
{
    for (auto *button : window.findChild<TitleBar *>()->findChildren<QPushButton *>()) {
        if (button->text().endsWith(QStringLiteral("登录")))
            QTest::mouseClick(button, Qt::LeftButton);
    }
}

bool signInAt(const QWidget &window, const QString &phone, const QString &password)
{
    askForSignIn(window);
    const QPointer<LoginDialog> dialog = window.findChild<LoginDialog *>();
    if (!dialog)
        return false;
    QTest::keyClicks(dialog->findChild<QLineEdit *>(QStringLiteral("lineEdit_login_phoneNumber")),
                     phone);
    QTest::keyClicks(dialog->findChild<QLineEdit *>(QStringLiteral("lineEdit_login_password")),
                     password);
    QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("pushButton_login")),
                      Qt::LeftButton);
    return until([&] { return !dialog; });
}

QAbstractButton *serverButton(const QWidget &window, const QString &prefix)
{
    for (auto *item : window.findChildren<ZvGuideTabItem *>()) {
        if (item->getServerPrefix() == prefix)
            return item->findChild<QPushButton *>();
    }
    return nullptr;
}

} // namespace endtoend
