#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringView>

// Writes JSON in the one form every file of ours uses: one member per line,
// two spaces of indentation per level, "key" : value, members in the order
// they are written, every '/' escaped as "\/", empty containers as [] and {},
// shortest exact doubles (269, 9.5) and no trailing newline.
class JsonWriter
{
public:
    void beginObject();
    void endObject();
    void beginArray();
    void endArray();

    void key(QStringView name);

    void value(QStringView text);
    void value(bool flag);
    void value(qint64 number);
    void value(int number) { value(qint64(number)); }
    void value(double number);

    QByteArray take();

private:
    struct Level {
        int members = 0;
    };
    void beforeValue();
    void writeString(QStringView text);
    void newline(qsizetype depth);
    void close(char bracket);

    QByteArray m_out;
    QList<Level> m_levels;
    bool m_afterKey = false;
};

// Shortest text that reads back as exactly the same double.
QByteArray jsonNumber(double number);
