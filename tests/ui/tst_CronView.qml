import QtQuick
import Ostrelle
import "items.js" as Items

ViewTest {
    id: test

    name: "CronView"

    Component {
        id: cronView

        CronView {
            id: view

            width: 380
            height: 600
            viewModel: fixture.models.makeCron(view)
        }
    }

    function loadedView(jobs: var): Item {
        fixture.write(".ostrelle/ostrelle-cron-tracker.json",
                      JSON.stringify({version: 1, updated: "", jobs: jobs}));
        const view = createTemporaryObject(cronView, test);
        tryCompare(view.viewModel, "isLoading", false);
        tryVerify(() => jobs.every(each => Items.withText(view, each.name)));
        return view;
    }

    function job(changes: var): var {
        return Object.assign({id: "1", name: "Nightly", schedule: "every 5m", status: "green",
                              enabled: true}, changes);
    }

    function test_aDisabledJobSaysSo() {
        const items = Items.visibleItems(loadedView([job({enabled: false})]));
        verify(Qt.colorEqual(items.find(each => each.text === "DISABLED" && each.tint).tint, Theme.grey));
        verify(Qt.colorEqual(items.find(each => each.status !== undefined && each.tint).tint, Theme.red));
    }

    function test_anyNameIsOneLine() {
        compare(Texts.oneLine(" a\nb\u0007 " + "😀".repeat(99)), "a b " + "😀".repeat(48) + "…");
        const view = loadedView([job(), job({id: "2", name: "a\nb".repeat(1000)})]);
        const cards = Items.visibleItems(view).filter(each => each.summary !== undefined);
        compare(cards[1].height, cards[0].height);
    }

    function test_unfoldsThePayload() {
        const view = loadedView([job({id: undefined, payload: "Say good night"})]);
        verify(!Items.withText(view, "Payload"));
        mouseClick(Items.withText(view, "Nightly"));
        tryVerify(() => Items.withText(view, "Say good night"));
        view.viewModel.load(); // which gives the job another id
        tryCompare(view.viewModel, "isLoading", false);
        verify(Items.withText(view, "Payload"));
    }

    function test_emptyOrBroken() {
        verify(Items.withText(createTemporaryObject(cronView, test), "Loading…"));
        const view = loadedView([]);
        verify(Items.withText(view, "No cron jobs configured yet."));
        fixture.write(".ostrelle/ostrelle-cron-tracker.json", "noise");
        mouseClick(Items.withText(view, "Refresh"));
        const isTold = () => Items.texts(view).some(text => text.startsWith("Cron data unreadable: "));
        tryVerify(isTold);
        mouseClick(Items.withText(view, "Refresh"));
        verify(isTold());
        verify(Items.withText(view, "No cron jobs configured yet."));
    }
}
