#include "support/testregistry.h"

#include <QApplication>
#include <QFileInfo>
#include <QMap>
#include <QMutex>
#include <QStringList>
#include <QtTest/QtTest>

#include <cstdio>
#include <vector>

namespace zvtest {
namespace {

QMap<QString, TestMaker> &makers()
{
    static QMap<QString, TestMaker> map;
    return map;
}

struct Messages {
    QMutex mutex;
    QStringList announced;
    QStringList unannounced;
    QtMessageHandler next = nullptr;
};

Messages &messages()
{
    static Messages instance;
    return instance;
}

// What Qt says of itself and no test can prevent: the offscreen platform of what it lacks, and the
// network of a connection that two of its parts find broken at the same moment.
bool isAllowed(const QString &text)
{
    return text.startsWith(QLatin1String("This plugin does not support "))
        || text.startsWith(QLatin1String("QNetworkReplyImplPrivate::error: Internal problem"));
}

void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    Messages &all = messages();
    if (type != QtDebugMsg && type != QtInfoMsg && !isAllowed(text)) {
        QMutexLocker lock(&all.mutex);
        bool wasAnnounced = false;
        for (int i = 0; i < all.announced.size(); ++i) {
            if (text.contains(all.announced.at(i))) {
                all.announced.removeAt(i);
                wasAnnounced = true;
                break;
            }
        }
        if (!wasAnnounced)
            all.unannounced.append(text);
    }
    if (all.next)
        all.next(type, context, text);
}

} // namespace

bool registerTest(const char *sourceFile, TestMaker maker)
{
    QString subject = QFileInfo(QString::fromUtf8(sourceFile)).completeBaseName();
    if (subject.startsWith(QLatin1String("test_")))
        subject.remove(0, 5);
    makers().insert(subject, std::move(maker));
    return true;
}

void expectMessage(const QString &part)
{
    Messages &all = messages();
    QMutexLocker lock(&all.mutex);
    all.announced.append(part);
}

int runRegisteredTest(int argc, char **argv)
{
    const QString subject = argc > 1 ? QString::fromUtf8(argv[1]) : QString();
    if (!makers().contains(subject)) {
        const QString known = QStringList(makers().keys()).join(QLatin1Char(' '));
        std::fprintf(stderr, "usage: %s SUBJECT [QtTest options]\nsubjects: %s\n", argv[0],
                     qPrintable(known));
        return 2;
    }

    QApplication application(argc, argv);
    QApplication::setFont(QFont(QStringLiteral("Noto Sans CJK SC"), 10));
    const std::unique_ptr<QObject> test = makers().value(subject)();

    std::vector<char *> arguments{argv[0]};
    arguments.insert(arguments.end(), argv + 2, argv + argc);

    // QtTest puts in a message handler of its own when it starts; ours stands in front of it.
    QTest::qInit(test.get(), int(arguments.size()), arguments.data());
    messages().next = qInstallMessageHandler(handleMessage);
    int failures = QTest::qRun();
    qInstallMessageHandler(messages().next);
    QTest::qCleanup();

    Messages &all = messages();
    for (const QString &text : qAsConst(all.unannounced)) {
        std::fprintf(stderr, "FAIL!  unannounced message: %s\n", qPrintable(text));
        ++failures;
    }
    for (const QString &text : qAsConst(all.announced)) {
        std::fprintf(stderr, "FAIL!  announced message never came: %s\n", qPrintable(text));
        ++failures;
    }
    return failures == 0 ? 0 : 1;
}

} // namespace zvtest

int main(int argc, char **argv)
{
    return zvtest::runRegisteredTest(argc, argv);
}
