import Ostrelle

// A status word on a capsule of its colour.
Capsule {
}
