import QtQuick
import Marlet

/// The tab of Apple TV or the iTunes Store. They are asked on Return alone: both want to be asked
/// seldom.
PickerPage {}
