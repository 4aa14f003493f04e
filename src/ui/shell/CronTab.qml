import Ostrelle

CronView {
    required property ContentPanel panel

    viewModel: CronViewModel {}
}
