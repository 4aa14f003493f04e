import Ostrelle

CronView {
    id: tab

    required property ContentPanel panel

    viewModel: tab.panel.models.makeCron(tab)
}
