#include "palette.h"

#include <QHash>

namespace {

QColor c(const char* hex) { return QColor(QLatin1String(hex)); }

// One row per colour, in the order of the Palette fields. Keys are silvery and
// tinted towards the fruit; a highlighted key glows in the fruit's own colour.
QHash<QString, Palette> makePalettes()
{
    QHash<QString, Palette> p;
    p.insert(QStringLiteral("graphite"),
             {c("#666b73"), c("#3f434a"), c("#16181b"), c("#8f959e"), c("#3a3e44"), c("#2b2e33"),
              c("#202226"), c("#eef0f2"), c("#c3c8ce"), c("#1e2024"), c("#33373d"),
              c("#8cc4f2"), c("#4b86bd"), c("#ffffff"), c("#1c1e22"), c("#0c0d0f"), c("#2b2e33")});
    p.insert(QStringLiteral("blueberry"),
             {c("#5571c6"), c("#2f4692"), c("#111a3d"), c("#8aa0e3"), c("#304a96"), c("#22346c"),
              c("#18234d"), c("#f0f3fb"), c("#c8d0ea"), c("#18234d"), c("#2b3f82"),
              c("#8ea8f5"), c("#4663c4"), c("#ffffff"), c("#161d38"), c("#0a0e1d"), c("#1f2d5e")});
    p.insert(QStringLiteral("lime"),
             {c("#a6d443"), c("#6a9c1c"), c("#253a05"), c("#d4f08a"), c("#6d9e1f"), c("#517914"),
              c("#34520b"), c("#f7fbec"), c("#d6e5b5"), c("#2b4407"), c("#3f6410"),
              c("#c4ef6a"), c("#7cb026"), c("#203404"), c("#141b0a"), c("#090d04"), c("#4a7012")});
    p.insert(QStringLiteral("yuzu"),
             {c("#f8d83a"), c("#dba70e"), c("#4d3700"), c("#fff0a0"), c("#d9a90f"), c("#b8880a"),
              c("#7a5700"), c("#fffcee"), c("#efe2b5"), c("#4d3700"), c("#7d5c00"),
              c("#ffe766"), c("#f2b70d"), c("#3f2d00"), c("#1f1a09"), c("#100d03"), c("#a67c08")});
    p.insert(QStringLiteral("tangerine"),
             {c("#fa9a3e"), c("#de6712"), c("#4a1d00"), c("#ffc990"), c("#d4650f"), c("#b0500a"),
              c("#6b2a03"), c("#fff7ef"), c("#f0d8c2"), c("#4a1d00"), c("#9c4208"),
              c("#ffb866"), c("#ee7417"), c("#ffffff"), c("#22150b"), c("#120a04"), c("#9c4508")});
    p.insert(QStringLiteral("strawberry"),
             {c("#ea4b60"), c("#bb1f38"), c("#42050f"), c("#ff8fa0"), c("#b51d36"), c("#931629"),
              c("#5c0a17"), c("#fff4f5"), c("#f0cdd3"), c("#42050f"), c("#a8192f"),
              c("#ff7a8e"), c("#dc2c47"), c("#ffffff"), c("#220a0f"), c("#130508"), c("#f6d66f")});
    p.insert(QStringLiteral("blackberry"),
             {c("#55336a"), c("#2d1839"), c("#0f0515"), c("#7f5a96"), c("#2e1a3a"), c("#21112a"),
              c("#170a1d"), c("#f3eff6"), c("#d0c4da"), c("#150a1c"), c("#4b2a5e"),
              c("#b47fd6"), c("#7343a0"), c("#ffffff"), c("#180c1e"), c("#0c0510"), c("#1b0d22")});
    return p;
}

} // namespace

const Palette& palette(const QString& colourName)
{
    static const QHash<QString, Palette> palettes = makePalettes();
    const auto found = palettes.constFind(colourName);
    return found != palettes.constEnd() ? *found : *palettes.constFind(QStringLiteral("graphite"));
}
