import QtQuick
import QtTest
import Ostrelle
import "items.js" as Items

ViewTest {
    id: test

    name: "SetupSheet"
    height: 1000

    Component {
        id: setupSheet

        SetupSheet {
            width: 380
            height: 1000
            setupManager: fixture.setupManager
        }
    }

    SignalSpy {
        id: doneSpy

        signalName: "done"
    }

    readonly property string loggedOut: "true"
    readonly property string loggedIn: `case $1 in status) echo '{"BackendState": "Running"}';; esac`
    readonly property string serving: `case $1 in status) echo '{"BackendState": "Running"}';;
        serve) echo https://studio.ts.net;; esac`

    function prepare(tailscale: string, agent: bool) {
        ["brew", "node", "duskrell"].forEach(name => fixture.tool(name, "true"));
        fixture.tool("tailscale", tailscale);
        fixture.tool("cc", "true"); // stands in for Xcode's
        if (agent) {
            fixture.write(".duskrell/agents/main/agent", "");
        }
    }

    // The configuration file is looked for after all that changes here.
    function sheetAfterChecks(): Item {
        fixture.setupManager.runChecks();
        tryCompare(fixture.setupManager, "hasConfig", true);
        const sheet = createTemporaryObject(setupSheet, test);
        waitForRendering(sheet);
        return sheet;
    }

    // The names of the symbols before the rows and titles with these words.
    function marks(sheet: Item, words: var): var {
        const items = Items.visibleItems(sheet);
        return words.map(word => {
            const text = items.findIndex(item => item.text === word);
            return text < 0 ? "" : items.slice(0, text).reverse().find(item => item.source !== undefined).name;
        });
    }

    function test_steps_data() {
        return [
            {tag: "nothing there", step: 1, marks: ["circle.dotted", "", ""],
             shown: ["Install Everything", "here: your login password", "https://tailscale.com/download/linux"],
             hidden: ["2. Tailscale HTTPS", "3. Duskrell Setup", "✓ Voice agent ready."]},
            {tag: "no Tailscale", tailscale: "", step: 1, marks: ["circle.dotted", "", "circle"],
             shown: ["Install Everything"], hidden: ["2. Tailscale HTTPS", "Save"]},
            {tag: "logged out", tailscale: loggedOut, step: 2,
             marks: ["checkmark.circle.fill", "circle.dotted", "circle"], shown: ["here: cc", "Open Tailscale", "sudo tailscale up"],
             hidden: ["Install Everything", "Copy Link", "Open Setup in Terminal"]},
            {tag: "not served", tailscale: loggedIn, agent: true, step: 2,
             marks: ["checkmark.circle.fill", "circle.dotted", "circle"],
             shown: ["Step 1: Enable MagicDNS + HTTPS Certs", "Open DNS Settings →", "Configure HTTPS Serve"],
             hidden: ["Open Tailscale", "Agent configured"]},
            {tag: "no agent", tailscale: serving, step: 3,
             marks: ["checkmark.circle.fill", "checkmark.circle.fill", "circle.dotted"],
             shown: ["✓ Devices on your tailnet can reach this gateway securely.", "Open Setup in Terminal"],
             hidden: ["Save", "Copy Link"]},
            {tag: "no token", tailscale: serving, agent: true, step: 3,
             marks: ["checkmark.circle.fill", "checkmark.circle.fill", "circle.dotted"],
             shown: ["duskrell config get gateway.auth.token", "Save"], hidden: ["Open Setup in Terminal"]}
        ];
    }

    function test_steps(row) {
        if (row.tailscale !== undefined) {
            prepare(row.tailscale, row.agent ?? false);
        }
        const sheet = sheetAfterChecks();
        compare(sheet.currentStep, row.step);
        compare(marks(sheet, ["1. Prerequisites", "2. Tailscale HTTPS", "3. Duskrell Setup"]), row.marks);
        row.shown.forEach(text => verify(Items.withText(sheet, text), text));
        row.hidden.forEach(text => verify(!Items.withText(sheet, text), text));
    }

    function test_passwordOfBlanksIsAskedForAgain() {
        const sheet = sheetAfterChecks();
        const install = Items.withText(sheet, "Install Everything");
        const field = Items.visibleItems(sheet).find(item => item.placeholderText === "Mac password");
        verify(!install.enabled);
        field.forceActiveFocus();
        keyClick(Qt.Key_Space);
        verify(install.enabled && field.echoMode === TextInput.Password);
        mouseClick(install);
        verify(fixture.setupManager.needsSudoPassword && field.activeFocus);
        compare(field.selectedText.length, 1);
    }

    function test_refusedPassword() {
        fixture.write("resources/install-duskrell.sh",
                      "await() { until [ -e ~/$1 ] || ((SECONDS > 60)); do sleep 0.01; done; }; for line in 1 2 3 4 5 6 7 8 9; do echo $line; done;"
                      + "await more; echo more; await go; echo SUDO_FAILED; exit 1");
        const sheet = sheetAfterChecks();
        fixture.setupManager.sudoPassword = "wrong";
        const install = Items.withText(sheet, "Install Everything");
        mouseClick(install);
        compare(install.text, "Installing…");
        verify(!install.enabled);
        const log = () => Items.visibleItems(sheet).find(item => item.positionViewAtEnd);
        tryVerify(() => log()?.contentY > 0 && log().atYEnd);
        log().forceActiveFocus();
        keyClick(Qt.Key_Up);
        tryVerify(() => !log().moving);
        const read = {y: log().contentY, height: log().contentHeight};
        fixture.write("more", "");
        tryVerify(() => log().contentHeight > read.height);
        compare(log().contentY, read.y); // where the user has scrolled to
        fixture.write("go", "");
        tryVerify(() => Items.withText(sheet, "Incorrect password — try again"));
        // What follows by itself is the voice agent's installation.
        tryVerify(() => Items.withText(sheet, "Setup complete!"));
        compare(install.text, "Install Everything");
    }

    function test_token() {
        prepare(serving, true);
        const sheet = sheetAfterChecks();
        const field = Items.visibleItems(sheet).find(item => item.placeholderText === "Paste gateway token");
        field.forceActiveFocus();
        keyClick(Qt.Key_Space);
        mouseClick(Items.withText(sheet, "Save"));
        compare(sheet.currentStep, 3);
        field.forceActiveFocus();
        keyClick(Qt.Key_T);
        keyClick(Qt.Key_Return);
        tryCompare(sheet, "currentStep", 4);
        compare(marks(sheet, ["Token configured"]), ["checkmark.circle.fill"]);
        tryVerify(() => !field.activeFocus && Window.activeFocusItem.visible);
    }

    function test_opensOnlyWhatIsThere() {
        fixture.tool("xdg-open", "true");
        Desktop.openIfThere("/nowhere/Tailscale.app");
        Desktop.openIfThere("/");
        tryVerify(() => fixture.read("calls") === "xdg-open /\n");
    }

    function test_finishing() {
        const sheet = sheetAfterChecks();
        const log = () => Items.visibleItems(sheet).find(item => item.positionViewAtEnd);
        verify(!log());
        doneSpy.target = sheet;
        doneSpy.clear();
        sheet.height = 300;
        keyClick(Qt.Key_End); // for who sees that and has no control there
        verify(Items.withText(sheet, "Python venv").mapToItem(sheet, 0, 0).y < 250);
        sheet.height = 1000;
        fixture.setupManager.sudoPassword = "typed";
        sheet.visible = false;
        verify(!fixture.setupManager.sudoPassword);
        sheet.visible = true;
        fixture.setupManager.gatewayTokenInput = "typed";
        mouseClick(Items.withText(sheet, "Skip"));
        compare(doneSpy.count, 1);
        verify(!fixture.setupManager.gatewayTokenInput);
        const finish = Items.withText(sheet, "Install Voice + Finish");
        mouseClick(finish);
        verify(!finish.enabled);
        tryVerify(() => Items.withText(sheet, "Setup complete!"));
        tryVerify(() => finish.enabled && finish.visible); // curl is missing, for instance
        fixture.tool("curl", "echo model > $3");
        fixture.tool("python3", "/bin/mkdir -p $3/bin; /bin/ln -s /bin/true $3/bin/python");
        mouseClick(finish);
        tryVerify(() => Items.withText(sheet, "Done"));
        verify(!Items.withText(sheet, "Skip") && !finish.visible);
        tryVerify(() => log().contentY > 0 && log().atYEnd);
        verify(Items.withText(sheet, "✓ Voice agent ready."));
        mouseClick(Items.withText(sheet, "Done"));
        compare(doneSpy.count, 2);
    }
}
