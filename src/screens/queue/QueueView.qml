import QtQuick
import Marlet

/// The jobs and their run.
FocusScope {}
