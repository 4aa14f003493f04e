import QtQuick
import QtTest
import Ostrelle
import "items.js" as Items

TestCase {
    id: test

    name: "shell"
    when: windowShown
    visible: true
    width: 380
    height: 700

    Component {
        id: contentPanel

        ContentPanel {
            width: 380
            height: 700
            gatewayVM: fixture.gatewayVM
            voiceVM: fixture.voiceVM
            serviceManager: fixture.serviceManager
            setupManager: fixture.setupManager
            statusServerRunning: true
        }
    }

    function init() {
        fixture.reset();
    }

    function test_arrowsStayAmongTheTabs_data() {
        return [
            {tag: "left to right", mirrored: false, next: Qt.Key_Right, back: Qt.Key_Left},
            {tag: "right to left", mirrored: true, next: Qt.Key_Left, back: Qt.Key_Right}
        ];
    }

    function test_arrowsStayAmongTheTabs(row) {
        const panel = createTemporaryObject(contentPanel, test, {projectTrackingEnabled: false});
        panel.LayoutMirroring.enabled = row.mirrored;
        panel.LayoutMirroring.childrenInherit = true;
        waitForRendering(panel);
        const tab = label => Items.visibleItems(panel).find(each => each.label === label);
        compare(tab("Ostrelle").x > tab("Settings").x, row.mirrored);
        tab("Ostrelle").forceActiveFocus();
        keyClick(row.back);
        verify(tab("Settings").visualFocus);
        keyClick(row.next);
        keyClick(row.next); // past the hidden one
        verify(tab("Agents").visualFocus);
        keyClick(Qt.Key_Return);
        compare(panel.selectedTab, 2);
    }

    function test_theChatFollowsALink() {
        const panel = createTemporaryObject(contentPanel, test);
        const chat = Items.visibleItems(panel).find(each => each.chatVM === panel.chatVM && each.send);
        compare(chat.gatewayURL, fixture.gatewayVM.gatewayURL);
        fixture.gatewayVM.gatewayURL = "http://127.0.0.3:9"; // the file is saved only then
        fixture.saveGateways(["http://127.0.0.3:9"]);
        tryCompare(chat, "gatewayURL", "http://127.0.0.3:9");
    }
}
