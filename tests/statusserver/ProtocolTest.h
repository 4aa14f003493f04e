#pragma once

#include <QObject>

class ProtocolTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void exactBytes_data();
    void exactBytes();
    void documentsAreServedAsStored_data();
    void documentsAreServedAsStored();
    void documentThatClaimsToBeEmpty();
    void whatIsNoDocument_data();
    void whatIsNoDocument();
    void historyNeedsTheToken();
    void historyOfTheNewestLog();
    void largeDocumentArrivesWhole();
    void portInUse();
    void portOutOfRange_data();
    void portOutOfRange();
    void stopAndStartAgain();
    void legacyAgentIsRetired();
};
