import QtQuick
import Ostrelle
import "items.js" as Items

ViewTest {
    id: test

    name: "GatewaySettingsView"
    height: 1400

    // Neither is this machine's by its text, and nobody answers there.
    readonly property string near: "http://127.0.0.2:9"
    readonly property string far: "https://far.quiet-otter.invalid"
    readonly property string active: "CONNECTED TO:tiffanyBlue|%1|Copy|<doc.on.doc>~|Show QR to pair phone, Hidden|<qrcode>|"

    Rectangle {
        anchors.fill: parent
        color: Theme.background
    }

    Component {
        id: settingsView

        GatewaySettingsView {
            id: view

            width: test.width
            height: test.height
            models: fixture.models.makeSettings(view)
            gatewayVM: fixture.gatewayVM
            serviceManager: fixture.serviceManager
            setupManager: fixture.setupManager
            projectTrackingEnabled: true
        }
    }

    function init() {
        Theme.motion = false;
        fixture.reset();
    }

    function cleanup() {
        Theme.motion = true;
    }

    function makeView(urls: var): Item {
        fixture.saveGateways(urls);
        fixture.restart();
        const view = createTemporaryObject(settingsView, test);
        view.forceActiveFocus();
        tryVerify(() => Items.withText(view, urls[0]));
        return view;
    }

    function press(view: Item, text: string) {
        tryVerify(() => Items.withText(view, text)?.enabled, 5000, text);
        settle(view);
        mouseClick(Items.withText(view, text));
    }

    // Waits until everything is in its place.
    function settle(view: Item) {
        tryVerify(() => !Items.visibleItems(view).some(item => isPolishScheduled(item)));
    }

    function row(view: Item, name: string): Item {
        return Items.visibleItems(view).find(item => item.displayName === name);
    }

    function choice(view: Item, name: string): Item {
        return Items.visibleItems(row(view, name)).find(item => item.tokenTail !== undefined
            && item.clicked !== undefined);
    }

    function secretField(item: Item): Item {
        return Items.visibleItems(item).find(each => each.placeholderText === "Paste gateway token");
    }

    function config(): var {
        return JSON.parse(fixture.read(".ostrelle/config.json")).gateway;
    }

    function test_cameraReadsTheCode() {
        fixture.storeToken("to+ken&1", test.near);
        fixture.settings.geminiAPIKey = "gem=1";
        tryVerify(() => fixture.read(".config/ai.duskrell.ostrelle.conf").includes("gem=1"));
        const view = makeView([test.near]);
        press(view, "Show QR to pair phone");
        const code = findChild(view, "qrImage");
        tryVerify(() => !code.isEmpty);
        verify(told(view).includes("|<qrcode>|QR code|Scan with iPhone camera to connect~|Change Token|<key.fill>|TAILSCALE"));
        const [picture, corner] = [grabImage(view), code.mapToItem(view, 0, 0)];
        const pixels = Array.from({length: code.width}, (_, i) => i);
        const at = (x, y) => picture.red(corner.x + x, corner.y + y);
        [at, (x, y) => at(y, x)].forEach(red => { // in the middle, and sharp
            const dark = pixels.filter(x => pixels.some(y => red(x, y) === 0));
            verify(Math.abs(dark[0] + dark[dark.length - 1] + 1 - code.width) < 2 && new Set(pixels.map(y => red(dark[0], y))).size < 4);
        });
        picture.save(fixture.path("code.png"));
        compare(fixture.scan(fixture.path("code.png")), "ostrelle://config?gatewayBaseURL=http%3A%2F%2F127.0.0.2%3A9&token=to%2Bken%261&geminiAPIKey=gem%3D1");
        view.visible = false;
        view.visible = true;
        verify(!Items.withText(view, "Scan with iPhone camera to connect"));
    }

    function test_tokenOfTheGatewayInUse() {
        const view = makeView([test.near]);
        press(view, "Add Token");
        const field = secretField(view);
        verify(field.activeFocus && told(view).includes("|Run this on the gateway machine to get the token:~|"));
        settle(view);
        const command = "duskrell config get gateway.auth.token";
        mouseClick(Items.visibleItems(view).find(item => item.copiedText === command));
        compare(fixture.clipboard(), command);
        keyClick(Qt.Key_Escape);
        verify(!secretField(view));
        verify(Items.withText(view, "Add Token").activeFocus);

        keyClick(Qt.Key_Return);
        Desktop.copy("pasted\n");
        keyClick(Qt.Key_V, Qt.ControlModifier);
        verify(secretField(view).length === 6 && !secretField(view).displayText.includes("p"));
        keyClick(Qt.Key_Return);
        tryVerify(() => Items.withText(view, "Change Token"));
        tryVerify(() => !secretField(view));
        compare(fixture.storedToken(test.near), "pasted");
        compare(fixture.storedToken("_active_"), "pasted");

        press(view, "Change Token");
        keyClick(Qt.Key_A);
        view.visible = false;
        compare(view.models.profiles.tokenInput, ""); // no typed token waits behind a closed panel
        view.visible = true;
        keyClick(Qt.Key_Return); // saves nothing
        verify(!secretField(view));
        press(view, "Change Token");
        keyClick(Qt.Key_A);
        keyClick(Qt.Key_Backspace);
        keyClick(Qt.Key_Return); // what the user has emptied takes the stored one away
        tryVerify(() => Items.withText(view, "Add Token"));
        compare(fixture.storedToken(test.near), "");
    }

    function test_rejectedToken() {
        fixture.tool("duskrell", "while [ ! -e \"$HOME/go\" ]; do sleep 0.02; done");
        fixture.storeToken("old", "_active_");
        fixture.startGateway();
        fixture.rejectTokens();
        fixture.restart();
        const view = createTemporaryObject(settingsView, test);
        tryVerify(() => Items.withText(view, "Gateway is rejecting this token."));
        const warning = Items.visibleItems(view).find(item => item.isLocalGateway);
        compare(told(warning), "<exclamationmark.triangle.fill>:yellow|Gateway is rejecting this token.|Reset Token|#ff8f89");
        warning.isLocalGateway = false;
        compare(told(warning), "<exclamationmark.triangle.fill>:yellow|Remote gateway rejected token — ask the owner for the correct token.");
        warning.isLocalGateway = true;
        const reset = Items.withText(view, "Reset Token");
        settle(view);
        mouseClick(reset);
        verify(!reset.visible && Items.symbol(view, "spinner"));
        fixture.write("go", "");
        tryVerify(() => !Items.symbol(view, "spinner"));
    }

    // As when the panel closes and opens again, with the same gateway or with another one.
    function test_whatIsKept() {
        const view = makeView([test.near, test.far]);
        press(view, "Add Token");
        const kept = view.keepsake();
        const again = createTemporaryObject(settingsView, test);
        again.restore(kept);
        tryVerify(() => secretField(again));
        const other = createTemporaryObject(settingsView, test);
        kept.gateway = test.far;
        other.restore(kept);
        verify(!secretField(other));
    }

    function test_switching() {
        fixture.storeToken("near-token", test.near);
        const view = makeView([test.near, test.far]);
        press(view, "PROFILES");
        tryVerify(() => Items.withText(view, "Token: ••••oken"));
        choice(view, "far.quiet-otter.invalid").forceActiveFocus();
        keyClick(Qt.Key_Return);
        compare(told(view), test.active.arg("127.0.0.2|http://127.0.0.2:9~") + "Change Token|<key.fill>|TAILSCALE DEVICES~|Find Peers|Tip: After "
            + "adding, tap the 🔑 icon on the profile to paste the remote gateway's token.~|PROFILES, Expanded|<chevron.right>~|~|127.0.0.2, "
            + "http://127.0.0.2:9, Token: ••••oken on|<checkmark.circle.fill>:green|~|#b383dbeb|Token of 127.0.0.2|<key.fill>~|Remove 127.0.0.2"
            + "|<xmark>:red|far.quiet-otter.invalid, https://far.quiet-otter.invalid off|<circle>~|<lock.fill>:green|~|Token of "
            + "far.quiet-otter.invalid|<key.fill>:teal|Remove far.quiet-otter.invalid|<xmark>:red|Switch from 127.0.0.2?|Cancel"
            + "|Switch|:textOnAccent|(Add Gateway Manually)~|Add Gateway Manually|(http://ip:18789)~|Add gateway!|(Gemini API key)~|Gemini API "
            + "key|()|Get a key at https://aistudio.google.com/apikey|#54a9ff|ADVANCED, Collapsed|<chevron.right>~|~");
        verify(Items.withText(view, "Switch").activeFocus);
        keyClick(Qt.Key_Escape);
        verify(!Items.withText(view, "Switch"));
        verify(choice(view, "far.quiet-otter.invalid").activeFocus);

        keyClick(Qt.Key_Space);
        press(view, "Cancel");
        compare(config().url, test.near);
        settle(view);
        mouseClick(choice(view, "far.quiet-otter.invalid"));
        press(view, "Switch");
        tryCompare(fixture.gatewayVM, "gatewayURL", test.far);
        compare(config().url, test.far);
        verify(Items.symbol(row(view, "127.0.0.2"), "circle"));
        const now = test.active.arg("far.quiet-otter.invalid|<lock.fill>:green|" + test.far + ":green");
        tryVerify(() => told(view).startsWith(now + "<key.fill>:yellow|No token — chat won't auth|Add Token|<key.fill>|TAILSCALE"));
    }

    function test_tokenOfAProfile() {
        const view = makeView([test.near, test.far]);
        press(view, "PROFILES");
        const name = "far.quiet-otter.invalid";
        const key = Items.withText(view, "Token of " + name);
        settle(view);
        mouseClick(key);
        "f4r".split("").forEach(letter => keyClick(letter));
        press(row(view, name), "Save");
        tryVerify(() => Items.withText(row(view, name), "Token: ••••f4r"));
        verify(Qt.colorEqual(key.color, Theme.textSecondary));
        compare(fixture.storedToken(test.far), "f4r");
        compare(fixture.storedToken("_active_"), "");
    }

    function test_addingAndRemoving() {
        const view = makeView([test.near]);
        press(view, "PROFILES");
        const field = Items.visibleItems(view).find(item => item.placeholderText === "http://ip:18789");
        field.forceActiveFocus();
        keyClick(Qt.Key_At);
        keyClick(Qt.Key_Return);
        verify(told(view).includes("|Add gateway|<exclamationmark.triangle.fill>:yellow|Not added: the address has a "));
        keyClick(Qt.Key_Backspace);
        "192.168.1.20".split("").forEach(letter => keyClick(letter));
        press(view, "Add");
        compare(field.text, "");
        tryVerify(() => row(view, "192.168.1.20") && !Items.withText(view, "Add").enabled);
        compare(config().saved[1].url, "http://192.168.1.20:18789");
        verify(Items.withText(row(view, "192.168.1.20"), "http://192.168.1.20:18789"));

        choice(view, "127.0.0.2").clicked();
        press(view, "Token of 127.0.0.2");
        press(view, "Remove 127.0.0.2");
        tryVerify(() => !row(view, "127.0.0.2"));
        verify(!view.closeQuestion()); // they went with it
        compare(config().saved.map(gateway => gateway.name), ["192.168.1.20"]);
        compare(config().url, test.near);
        Items.withText(view, "Remove 192.168.1.20").clicked();
        tryVerify(() => told(view).includes("|No saved profiles~|"));
    }

    function test_advanced() {
        const page = createTemporaryObject(settingsView, test);
        press(page, "ADVANCED");
        const view = Items.visibleItems(page).find(each => each.showAdvanced && each.settings);
        const knob = Items.withText(view, "MagicDNS (HTTPS)").indicator.children[0];
        verify(knob.x > knob.width / 2);
        compare(told(view), "ADVANCED, Expanded|<chevron.right>~|~|MagicDNS (HTTPS), Uses Tailscale HTTPS with auto-renewed Let's Encrypt certs. "
            + "Requires 'tailscale serve' running. on|~|MagicDNS not available — check Tailscale:yellow|Launch at Login off|Voice Agent on|Start "
            + "Voice Agent on Launch off|Project Tracking, Automatically discovers and tracks projects based on your conversations. on|~|Debug "
            + "Log|Run Setup Again…");
        fixture.tool("tailscale", "echo '{\"Self\": {\"DNSName\": \"studio.ts.net\"}}'");
        fixture.gatewayVM.pollHealth();
        tryVerify(() => Items.withText(view, "https://studio.ts.net"));
        press(view, "MagicDNS (HTTPS)");
        verify(!fixture.gatewayVM.useMagicDNS && !Items.withText(view, "https://studio.ts.net"));
        tryVerify(() => knob.x < knob.width / 2);

        press(view, "Launch at Login");
        tryVerify(() => fixture.read(".config/autostart/ai.duskrell.ostrelle.desktop") !== "");
        press(view, "Run Setup Again…");
        verify(fixture.setupManager.showSetup);
    }
}
