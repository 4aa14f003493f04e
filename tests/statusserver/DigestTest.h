#pragma once

#include "support/ScratchHome.h"

#include <QObject>

class DigestTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lineRules_data();
    void lineRules();
    void equalsForwardReading_data();
    void equalsForwardReading();
    void longLinesDoNotCount();
    void byteOrderMarkStays();
    void textIsBounded();
    void survivesTruncation();
    void endsWhenStopped();
    void newestLog();

private:
    QByteArray digest(const QByteArray &log, int limit, std::size_t blockBytes,
                      std::size_t maxLineBytes = 8192);

    ScratchHome m_home;
    QByteArray m_written; // what the log file holds
};
