// Reads the picture subtitles of a Matroska file, its first track, in a process of its own, for
// io_of to time and to measure.
//
//   ocr_once FILE LANGUAGE OUT   a line for each: milliseconds, a tab, the text
#include <fstream>
#include <iostream>

#include "convert/pgs_ocr.h"

int main(int count, char** arguments) try {
    if (count != 4) {
        std::cerr << "usage: ocr_once FILE LANGUAGE OUT\n";
        return 2;
    }
    const auto film = marlet::MKVFile::open(arguments[1]);
    if (!film) return 1;
    marlet::RunControl control;
    std::ofstream out(arguments[3]);
    for (const marlet::Cue& cue :
         marlet::PGSOCR::cues(*film, film->tracks().at(0), arguments[2], false, control)) {
        out << cue.startMs << '\t';
        for (const char each : cue.text) each == '\n' ? out << "\\n" : out << each;
        out << '\n';
    }
    return 0;
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
