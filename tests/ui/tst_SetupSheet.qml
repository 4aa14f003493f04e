import QtQuick
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

    readonly property string first: ":green|<checkmark.circle.fill>:green|1. Prerequisites, done|Xcode CLI Tools here: cc +|~|Homebrew +|Node.js "
        + "+|Duskrell +|Tailscale +"
    readonly property string second: first + "|:green|<checkmark.circle.fill>:green|2. Tailscale HTTPS, done|Tailscale logged in +|HTTPS serve "
        + "active +|✓ Devices on your tailnet can reach this gateway securely.:green|:teal|<circle.dotted>:teal|3. Duskrell Setup, current step"
    readonly property string install: "|Tailscale -|here: what this page says, then the command~|https://tailscale.com/download/linux="
        + "|sudo tailscale up=|Mac password required for installation:~|here: your login password~|Mac password|~|<lock.fill>~|Install "
        + "Everything!|:textOnAccent"
    readonly property string later: "|#3dffffff|<circle>#3dffffff|3. Duskrell Setup, later#3dffffff"
    readonly property string serve: "|HTTPS serve active -|sudo tailscale serve --bg http://127.0.0.1:18789="
    readonly property string voice: "|here: “Install Voice + Finish” below~"

    function test_steps_data() {
        return [
            {tag: "nothing there", told: ":teal|<circle.dotted>:teal|1. Prerequisites, current step|Xcode CLI Tools -|here: gcc or clang, then "
                + "“Re-check” below~|Homebrew -|/bin/bash -c \"$(curl -fsSL https://raw.githubusercontent.com"
                + "/Homebrew/install/HEAD/install.sh)\"=|Node.js -|Duskrell -|here: “Install Everything” below~" + test.install},
            {tag: "no Tailscale", tailscale: "", told: ":teal|<circle.dotted>:teal|1. Prerequisites, current step|Xcode CLI Tools here: cc +|~"
                + "|Homebrew +|Node.js +|Duskrell +" + test.install + test.later},
            {tag: "logged out", tailscale: "true", told: test.first + "|:teal|<circle.dotted>:teal|2. Tailscale HTTPS, current step|Tailscale "
                + "logged in -|sudo tailscale up=" + test.serve + "|Open the Tailscale app and sign in to your tailnet, then tap Re-check.~|Open "
                + "Tailscale" + test.later},
            {tag: "not served", tailscale: loggedIn, agent: true, told: test.first + "|:teal|<circle.dotted>:teal|2. Tailscale HTTPS, "
                + "current step|Tailscale logged in +" + test.serve + "|Step 1: Enable MagicDNS + HTTPS Certs|In your Tailscale DNS settings, "
                + "enable MagicDNS first, then enable HTTPS Certificates (both on the same page).~|Open DNS Settings →|:teal|Copy Link"
                + "|<doc.on.doc>|Step 2: Configure HTTPS Serve|After enabling HTTPS above, click here to set up the secure connection.~|here: no "
                + "password is asked for, once you have typed~|sudo tailscale set --operator=$USER=|Configure HTTPS Serve" + test.later},
            {tag: "no agent", tailscale: serving, told: test.second + "|Agent configured -|duskrell onboard=|Token configured -|here: once the "
                + "agent is configured~|Duskrell needs initial configuration — this sets up your AI provider and API keys.~|Open Setup in "
                + "Terminal|<terminal>|After finishing, tap Re-check below.~"},
            {tag: "no token", tailscale: serving, agent: true, told: test.second + "|Agent configured +|Token configured -|Paste the "
                + "gateway token from your Duskrell config. Find it with:~|duskrell config get gateway.auth.token=|Paste gateway token|~|Save"}
        ];
    }

    function test_steps(row) {
        if (row.tailscale !== undefined) {
            prepare(row.tailscale, row.agent ?? false);
        }
        const shown = told(sheetAfterChecks()).replace(/, there.<checkmark.circle.fill>:green/g, " +")
            .replace(/, missing.<xmark.circle>:red/g, " -").replace(/.Copy.<doc.on.doc>~/g, "=");
        compare(shown, "OSTRELLE Setup|OSTRELLE Setup|Let’s get everything running.~|" + row.told + "|Config file +|TTS Models -"
            + test.voice + "|Python venv -" + test.voice + "|Re-check|Skip|~|Install Voice + Finish|:textOnAccent");
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
        compare(told(install), "Installing…!|In progress|<spinner>:textOnAccent|(Installing…):textOnAccent");
        const log = () => Items.visibleItems(sheet).find(item => item.positionViewAtEnd);
        tryVerify(() => log()?.contentY > 0 && log().atYEnd && log().clip && log().activeFocusOnTab);
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
        verify(told(sheet).includes("|Token configured, there|<checkmark.circle.fill>:green|Config file"));
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
        let done = 0;
        sheet.done.connect(() => ++done);
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
        compare(done, 1);
        verify(!fixture.setupManager.gatewayTokenInput);
        const finish = Items.withText(sheet, "Install Voice + Finish");
        fixture.tool("python3", "/bin/mkdir -p $3/bin; /bin/ln -s /bin/true $3/bin/python");
        mouseClick(finish);
        verify(!finish.enabled);
        tryVerify(() => Items.withText(sheet, "Setup complete!"));
        tryVerify(() => finish.enabled && finish.visible); // curl is missing, for instance
        tryVerify(() => !Items.withText(sheet, "✓ Voice agent ready."));
        fixture.tool("curl", "echo model > $3");
        mouseClick(finish);
        tryVerify(() => Items.withText(sheet, "Done"));
        verify(!Items.withText(sheet, "Skip") && !finish.visible);
        tryVerify(() => log().contentY > 0 && log().atYEnd);
        verify(Items.withText(sheet, "✓ Voice agent ready."));
        mouseClick(Items.withText(sheet, "Done"));
        compare(done, 2);
    }
}
