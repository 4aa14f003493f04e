import QtQuick
import Ostrelle
import "items.js" as Items

ViewTest {
    id: test

    name: "GatewayStatusView"
    height: 400

    readonly property string connected: 'case "$1" in
        status) echo \'{"Self": {"DNSName": "studio.ts.net."}}\';;
        ip) echo 100.64.0.1;;
    esac'

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
        fixture.tool("tailscale", test.connected);
        fixture.gatewayVM.pollHealth();
        tryCompare(fixture.gatewayVM, "isSecure", true);
        const view = createTemporaryObject(statusView, test);
        fixture.gatewayVM.useMagicDNS = false; // what is preferred then is not what is shown
        const address = Items.withText(view, "https://studio.ts.net");
        verify(Qt.colorEqual(address.color, Theme.green));
        verify(Items.symbol(view, "lock.fill") && !Items.symbol(view, "exclamationmark.triangle.fill"));
        const copy = Items.withText(view, "Copy");
        mouseClick(copy);
        compare(copy.text, "Copied");
        tryCompare(copy, "text", "Copy");
        compare(fixture.clipboard(), "https://studio.ts.net");
        view.statusServerRunning = false;
        view.statusPortTaken = true;
        verify(Items.withText(view, "Status is waiting: another program uses its port"));
    }

    function test_warningEnablesEncryption() {
        fixture.tool("tailscale", "true");
        fixture.tool("duskrell", "echo no such key >&2; exit 1");
        const view = insecureView();
        waitForRendering(view); // with the warning in its place
        const button = Items.withText(view, "Enable Tailscale Encryption");
        verify(Items.symbol(button, "shield.checkered") && !Items.withText(view, "Get Tailscale"));
        mouseClick(button);
        compare(button.text, "Enabling...");
        verify(!button.enabled && Items.symbol(button, "spinner") && !Items.symbol(button, "shield.checkered"));
        tryVerify(() => Items.withText(view, "Failed to set gateway.bind: no such key"));
        verify(button.enabled);

        fixture.tool("duskrell", "true");
        mouseClick(button);
        tryVerify(() => Items.texts(view)[0] === "Gateway");
    }

    function test_warningWithoutTailscale() {
        fixture.tool("xdg-open", "true");
        const view = insecureView();
        waitForRendering(view);
        mouseClick(Items.withText(view, "Get Tailscale"));
        tryVerify(() => fixture.read("calls") === "xdg-open https://tailscale.com/download\n");
        const dismiss = Items.withText(view, "Dismiss");
        mouseMove(dismiss);
        tryVerify(() => Qt.colorEqual(Items.symbol(dismiss, "xmark").color, Theme.textPrimary));
        mouseClick(dismiss);
        verify(!Items.withText(view, "Get Tailscale"));
    }
}
