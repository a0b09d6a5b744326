#include "settings/themedicon.h"

#include <QFile>
#include <QStyle>
#include <QWidget>

QIcon themedIcon(const QString& name, const QWidget* widget)
{
    QIcon bundled;
    for (const int size : {16, 22, 32, 48, 64}) {
        const QString path = QStringLiteral(":/icons/ui/%1-%2.png").arg(name).arg(size);
        if (QFile::exists(path))
            bundled.addFile(path, QSize(size, size));
    }
    if (bundled.isNull())
        bundled = widget->style()->standardIcon(QStyle::SP_FileIcon, nullptr, widget);
    return QIcon::fromTheme(name, bundled);
}
