#include "client/qtwords.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

bool qtwords::speakChinese(QCoreApplication &application)
{
    const QStringList folders{QLibraryInfo::location(QLibraryInfo::TranslationsPath),
                              QCoreApplication::applicationDirPath()
                                  + QStringLiteral("/translations")};
    auto *translator = new QTranslator(&application);
    for (const QString &folder : folders) {
        if (translator->load(QStringLiteral("qtbase_zh_CN"), folder))
            return QCoreApplication::installTranslator(translator);
    }
    delete translator;
    return false;
}
