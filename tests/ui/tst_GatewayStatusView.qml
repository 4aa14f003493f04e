import QtQuick
import Ostrelle
import "items.js" as Items

ViewTest {
    id: test

    name: "GatewayStatusView"
    height: 400

    readonly property string warning: "#24ffd60a|<exclamationmark.triangle.fill>:yellow|Insecure Connection|Dismiss|<xmark>~|Traffic is "
        + "unencrypted. Anyone on your network could intercept messages.~|"
    readonly property string card: "|Gateway, online|:green|~|Voice, not running|:red|~|Status, running|:green|~"
        + "|not encrypted<lock.open.fill>:teal|<link>~|%1#54a9ff|Copy|<doc.on.doc>~|<exclamationmark.triangle.fill>:yellow|Tailscale %2~"

    Component {
        id: statusView

        GatewayStatusView {
            width: 356
            viewModel: fixture.gatewayVM
            serviceManager: fixture.serviceManager
            voiceVM: fixture.voiceVM
            statusServerRunning: true
        }
    }

    // The view of a gateway that answers and is not encrypted.
    function insecureView(): Item {
        fixture.startGateway();
        fixture.restart();
        tryCompare(fixture.gatewayVM, "gatewayOnline", true);
        fixture.gatewayVM.pollHealth();
        tryCompare(fixture.gatewayVM, "showSecurityWarning", true);
        return createTemporaryObject(statusView, test);
    }

    function test_connected() {
        fixture.tool("tailscale", `case $1 in status) echo '{"Self": {"DNSName": "studio.ts.net."}}';; ip) echo 100.64.0.1;; esac`);
        fixture.gatewayVM.pollHealth();
        tryCompare(fixture.gatewayVM, "isSecure", true);
        const view = createTemporaryObject(statusView, test);
        fixture.gatewayVM.useMagicDNS = false; // what is preferred then is not what is shown
        const copy = Items.withText(view, "Copy");
        mouseClick(copy);
        compare(told(copy), "Copied|<checkmark>:green");
        tryCompare(copy, "text", "Copy");
        compare(fixture.clipboard(), "https://studio.ts.net");
        view.statusServerRunning = false;
        view.statusPortTaken = true;
        compare(told(view), "Gateway, offline|:red|~|Voice, not running|:red|~|Status, waiting for its port|:yellow|~|encrypted<lock.fill>:green"
            + "|<lock.fill>:green|https://studio.ts.net:green|Copy|<doc.on.doc>~|<exclamationmark.triangle.fill>:yellow|Status is waiting: "
            + "another program uses its port~");
    }

    function test_warningEnablesEncryption() {
        fixture.tool("tailscale", "true");
        fixture.tool("duskrell", "echo no such key >&2; exit 1");
        const view = insecureView();
        const card = test.card.arg(fixture.gatewayVM.gatewayURL).arg("connected but HTTPS not configured");
        waitForRendering(view); // with the warning in its place
        const button = Items.withText(view, "Enable Tailscale Encryption");
        compare(told(view), test.warning + "Enable Tailscale Encryption|<shield.checkered>" + card);
        mouseClick(button);
        compare(told(view), test.warning + "Enabling...!|In progress|<spinner>|(Enabling...)" + card);
        const why = "Failed to set gateway.bind: no such key";
        tryVerify(() => Items.withText(view, why));
        compare(told(view), test.warning + "Enable Tailscale Encryption|<shield.checkered>|" + why + "#ff7d75" + card);

        fixture.tool("duskrell", "true");
        mouseClick(button);
        tryVerify(() => Items.texts(view)[0] === "Gateway");
    }

    function test_warningWithoutTailscale() {
        fixture.tool("xdg-open", "true");
        const view = insecureView();
        waitForRendering(view);
        const card = test.card.arg(fixture.gatewayVM.gatewayURL).arg("not running — remote access unavailable");
        compare(told(view), test.warning + "Install Tailscale (free) to encrypt all traffic:~|Get Tailscale|<arrow.down.circle>:teal"
            + "|:teal" + card);
        mouseClick(Items.withText(view, "Get Tailscale"));
        tryVerify(() => fixture.read("calls") === "xdg-open https://tailscale.com/download\n");
        const dismiss = Items.withText(view, "Dismiss");
        mouseMove(dismiss);
        tryVerify(() => Qt.colorEqual(Items.symbol(dismiss, "xmark").color, Theme.textPrimary));
        mouseClick(dismiss);
        verify(!Items.withText(view, "Get Tailscale"));
    }
}
