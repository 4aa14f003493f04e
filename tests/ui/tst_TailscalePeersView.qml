import QtQuick
import Ostrelle
import "items.js" as Items

ViewTest {
    id: test

    name: "TailscalePeersView"
    height: 500

    Component {
        id: peersView

        TailscalePeersView {
            width: 356
            peers: fixture.peers
        }
    }

    // The tailnet has these devices, in the order of their names.
    function setDevices(addresses: var) {
        const peers = {};
        for (const name in addresses) {
            peers[name] = {Online: true, DNSName: name + ".invalid.", TailscaleIPs: [addresses[name]]};
        }
        fixture.tool("tailscale", "cat <<'END'\n" + JSON.stringify({Peer: peers}) + "\nEND");
    }

    function discoveredView(): Item {
        const view = createTemporaryObject(peersView, test);
        mouseClick(Items.withText(view, "Find Peers"));
        compare(told(Items.withText(view, "Discovering…")), "Discovering…!|In progress|<spinner>|(Discovering…)");
        tryVerify(() => Items.withText(view, "Find Peers")?.enabled);
        return view;
    }

    function row(view: Item, name: string): Item {
        return Items.visibleItems(view).find(item => item.gatewayOnline !== undefined
            && item.name === name);
    }

    function test_devices() {
        const ip = fixture.startPeer(200);
        setDevices({answering: ip, silent: "127.0.0.9"});
        const view = discoveredView();
        const answering = row(view, "answering");
        const silent = row(view, "silent");
        const help = "Duskrell gateway not responding on this device";
        compare(told(view), "TAILSCALE DEVICES~|Find Peers|<desktopcomputer>:cyan|answering|" + ip
            + "~|gateway answers<checkmark.circle.fill>:green|Add answering|<desktopcomputer>:cyan|silent|127.0.0.9~|" + help
            + "<exclamationmark.triangle.fill>:yellow|Add silent, " + help + "|No gateway — install Duskrell on this device:yellow|Tip: After "
            + "adding, tap the 🔑 icon on the profile to paste the remote gateway's token.~");
        mouseMove(Items.symbol(silent, "exclamationmark.triangle.fill"));
        tryVerify(() => Items.withText(Window.window.contentItem, help));
        mouseMove(answering);
        tryVerify(() => !Items.withText(Window.window.contentItem, help));
    }

    function test_adding() {
        const none = "|No other devices found~|";
        verify(!told(createTemporaryObject(peersView, test)).includes(none)); // nobody has looked yet
        setDevices({first: "127.0.0.9", second: "127.0.0.10"});
        const view = discoveredView();
        fixture.peers.add(2); // which is no row
        Items.withText(row(view, "first"), "Add").forceActiveFocus();
        keyClick(Qt.Key_Return);
        tryVerify(() => !row(view, "first") && row(view, "second"));
        const saved = JSON.parse(fixture.read(".ostrelle/config.json")).gateway.saved;
        compare(saved.pop(), {name: "first", url: "https://first.invalid", isMagicDNS: true});
        Items.withText(row(view, "second"), "Add").clicked();
        tryVerify(() => told(view).includes(none));
    }
}
