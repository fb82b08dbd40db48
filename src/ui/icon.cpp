#include "ui/icon.h"

#include <QFile>
#include <QHash>
#include <QString>

// Tool bars are made anew with each change of the focus, and an icon's making reads its file. The names are our own and
// few. Never freed: pictures must not outlive the application, as static objects would.
QIcon LoadIcon(const QString& i_resource) {
    static auto* const lp_icons = new QHash<QString, QIcon>;
    if (const auto l_known = lp_icons->constFind(i_resource); l_known != lp_icons->constEnd()) {
        return *l_known;
    }
    const QString l_withEnding = i_resource + QStringLiteral(".svg");
    return *lp_icons->insert(i_resource, QIcon(QFile::exists(l_withEnding) ? l_withEnding : i_resource));
}
