import QtQuick
import Marlet

/// The selected file or season.
FocusScope {}
