import QtQuick
import Ostrelle
import "items.js" as Items

ViewTest {
    id: test

    name: "shell"
    height: 700

    Component {
        id: panelRoot

        PanelRoot {
            width: 380
            height: 700
            models: fixture.models
            gatewayVM: fixture.gatewayVM
            voiceVM: fixture.voiceVM
            serviceManager: fixture.serviceManager
            setupManager: fixture.setupManager
            statusServer: fixture.statusServer
            projectTrackingEnabled: true
            motion: false
        }
    }

    function test_arrowsStayAmongTheTabs_data() {
        return [
            {tag: "left to right", mirrored: false, next: Qt.Key_Right, back: Qt.Key_Left},
            {tag: "right to left", mirrored: true, next: Qt.Key_Left, back: Qt.Key_Right}
        ];
    }

    function test_arrowsStayAmongTheTabs(row) {
        const root = createTemporaryObject(panelRoot, test);
        const panel = Items.visibleItems(root).find(each => each.selectedTab !== undefined);
        panel.selectedTab = 1;
        root.projectTrackingEnabled = false;
        compare(panel.selectedTab, 0);
        root.LayoutMirroring.enabled = row.mirrored;
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
        compare(told(tab("Agents").parent), "Ostrelle|<shield.lefthalf.filled>~|~|Agents|<point.3.connected.trianglepath.dotted>:teal|:teal"
            + "|Cron|<clock.arrow.2.circlepath>~|~|Settings|<gearshape>~|~");
    }

    // The panel with that tab chosen and all that opens open.
    function panelWith(tab: string, properties: var): Item {
        const root = createTemporaryObject(panelRoot, test, properties);
        const settled = () => tryVerify(() => !Items.visibleItems(root).some(item => isPolishScheduled(item)));
        Items.visibleItems(root).find(each => each.label === tab)?.clicked();
        tryVerify(() => !Items.visibleItems(root).some(each => each.isLoading));
        settled();
        Items.visibleItems(root).filter(each => (each.expanded ?? each.open) === false)
            .forEach(each => each.clicked?.());
        settled();
        return root;
    }

    function test_escapeAnswersAQuestionFirst() {
        fixture.saveGateways(["http://127.0.0.2:9", "http://127.0.0.3:9"]);
        fixture.restart();
        const root = panelWith("Settings", {});
        let closings = 0;
        root.closeRequested.connect(() => ++closings);
        tryVerify(() => Items.visibleItems(root).find(each => each.name === "127.0.0.3"));
        Items.visibleItems(root).find(each => each.name === "127.0.0.3").clicked();
        verify(Items.withText(root, "Switch"));
        Items.visibleItems(root).find(each => each.label === "Cron").forceActiveFocus();
        keyClick(Qt.Key_Escape);
        verify(!Items.withText(root, "Switch"));
        compare(closings, 0);
        keyClick(Qt.Key_Escape);
        compare(closings, 1);
        Items.withText(root, "Project Tracking").forceActiveFocus();
        keyClick(Qt.Key_Space);
        verify(!Items.visibleItems(root).some(each => each.label === "Projects"));
        verify(Items.withText(root, "ADVANCED")); // still here
        Items.visibleItems(root).find(each => each.label === "Cron").clicked();
        keyClick(Qt.Key_Escape); // where nothing is ever asked
        compare(closings, 2);
    }

    function test_whatWasLetGoComesBackAsItWas() {
        fixture.write(".ostrelle/ostrelle-project-tracker.json", JSON.stringify({
            version: 1, updated: "", projects: Array.from({length: 40}, (_, i) => (
                {id: String(i), name: "P" + i, description: "", status: "green", progress: 7, workstreams: []}))}));
        const root = panelWith("Projects", {height: 400});
        const top = () => Items.visibleItems(root).find(each => each.contentY !== undefined).contentY;
        const reopen = () => {
            root.active = false;
            tryVerify(() => !Items.withText(root, "Quit"));
            root.active = true;
        };
        tryVerify(() => Items.withText(root, "P0"));
        Items.visibleItems(root).find(each => each.contentY !== undefined).positionViewAtIndex(20, 0);
        const place = () => Items.withText(root, "P20")?.mapToItem(root, 0, 0).y;
        const before = place();
        verify(before < 300);
        reopen();
        tryVerify(() => place() === before);

        Items.visibleItems(root).find(each => each.label === "Settings").clicked();
        Items.withText(root, "PROFILES").clicked();
        const field = () => Items.visibleItems(root).find(each => each.placeholderText === "http://ip:18789");
        field().forceActiveFocus();
        keyClick(Qt.Key_1);
        tryVerify(() => top() > 0);
        const middle = top();
        Items.visibleItems(root).find(each => each.label === "Settings").forceActiveFocus();
        compare(top(), middle); // what is elsewhere is not brought into view
        reopen();
        compare(field().text, "1");
        tryVerify(() => top() === middle);
        Array.from({length: 9}).forEach(() => keyClick(Qt.Key_PageUp));
        const pane = Items.visibleItems(root).find(each => each.contentY !== undefined);
        verify(pane.turnPage(Qt.Key_Home) && !pane.turnPage(Qt.Key_Down));
        root.height += pane.contentHeight - pane.height - middle / 2; // so far could be gone back
        compare(top(), 0);
    }

    function test_largeTextsFromRightToLeftStayInThePanel_data() {
        return ["Ostrelle", "Projects", "Agents", "Cron", "Settings", "Setup"]
            .map((tag, tab) => ({tag: tag, hasWord: tab > 0 && tab < 5}));
    }

    function test_largeTextsFromRightToLeftStayInThePanel(row) {
        const word = "Wohnzimmerlautsprecherbeleuchtung";
        const write = (file, content) => fixture.write(".ostrelle/ostrelle-" + file + "-tracker.json",
                                                       JSON.stringify(content));
        write("agent", {agents: {[word]: {status: "busy", progress: 7}}, completions: []});
        write("cron", {version: 1, updated: "", jobs: [
            {id: "1", name: word, schedule: word, status: "green", lastRun: word, payload: word}]});
        write("project", {version: 1, updated: "", projects: [
            {id: "1", name: word, description: word, status: "green", progress: 70, workstreams: [
                {id: "1", name: word, status: "green", progress: 100, note: word}]}]});
        fixture.saveGateways(["http://127.0.0.1:9", "https://" + word + ".ts.net"]);
        fixture.restart();
        fixture.setupManager.showSetup = row.tag === "Setup";
        const root = panelWith(row.tag, {textScale: 4, "LayoutMirroring.enabled": true});
        tryVerify(() => Items.texts(root).some(text => text.includes(word)) === row.hasWord);
        for (const item of Items.visibleItems(root)) {
            const isText = item.elide !== undefined;
            if (isText || item.clicked || item.accepted) {
                const place = item.mapToItem(root, 0, 0, item.width, item.height);
                const what = [item, item.text, place, item.contentWidth].join(" ");
                verify(place.x >= 0 && place.x + place.width <= root.width, what);
                verify(!isText || item.contentWidth <= Math.ceil(item.width), what);
            }
        }
        Items.withText(root, "Skip")?.clicked();
        verify(!fixture.setupManager.showSetup);
    }

    function test_theWindow() {
        const window = fixture.openPanel(Qt.rect(100, 200, 300, 400));
        const root = window.contentItem.children[0];
        tryVerify(() => window.active && root.active && root.motion && !root.framed && !root.translucent && !root.LayoutMirroring.enabled);
        Window.window.requestActivate();
        tryVerify(() => !window.visible && !root.visible && !root.active); // and what it showed is let go of
        fixture.openPanel(Qt.rect(0, 0, 0, 0)); // as a window
        tryVerify(() => window.active && root.visible && root.active && root.framed && !root.translucent && window.height === 700);
        compare([window.title, window.minimumHeight, window.maximumHeight, window.flags & Qt.FramelessWindowHint], ["Ostrelle", 700, 700, 0]);
        fixture.openPanel(Qt.rect(100, 200, 300, 400));
        let stays; // the end of the earlier focus alone does not close it
        window.activeChanged.connect(() => stays = stays ?? (window.visible && root.visible && !root.framed));
        Window.window.requestActivate(); // before it has had the focus
        tryVerify(() => !window.visible && stays, 2500);
        fixture.openPanel(Qt.rect(0, 0, 0, 0));
        root.closeRequested();
        verify(!window.visible);
        fixture.openPanel(Qt.rect(0, 0, 0, 0)); // before it is let go of
        tryVerify(() => window.active);
        Window.window.requestActivate();
        tryVerify(() => !window.active);
        fixture.settings.projectTrackingEnabled = false;
        verify(!root.projectTrackingEnabled);
        wait(400); // longer than it waits for its focus, and than what it showed is kept
        verify(window.visible && root.active);
    }

    function test_theChatFollowsALink() {
        const root = createTemporaryObject(panelRoot, test);
        const chat = Items.visibleItems(root).find(each => each.chatVM && each.send);
        compare(chat.gatewayURL, fixture.gatewayVM.gatewayURL);
        fixture.followLink("http://127.0.0.3:9");
        tryCompare(chat, "gatewayURL", "http://127.0.0.3:9");
    }
}
