// Proves one rebuilt film in a process of its own, for io_of to time beside openssl.
//
//   verify_once ORIGINAL REBUILT   prints reasons and notes; exit status 1 when it isn't proved
#include <exception>
#include <iostream>
#include <limits>

#include "verify/rebuild_verifier.h"

int main(int count, char** arguments) {
    constexpr int unusable = 2;
    if (count != 3) {
        std::cerr << "usage: verify_once ORIGINAL REBUILT\n";
        return unusable;
    }
    try {
        marlet::RunControl control;
        marlet::RebuildTerms terms;
        terms.maxAfter = std::numeric_limits<double>::max();
        const marlet::VerifyReport report =
            marlet::verifyRebuild(arguments[1], arguments[2], terms, control);
        for (const std::string& reason : report.reasons) std::cout << "reason: " << reason << '\n';
        for (const std::string& note : report.notes) std::cout << "note: " << note << '\n';
        std::cout << report.before << " s before, " << report.after << " s after\n";
        return report.reasons.empty() ? 0 : 1;
    } catch (const std::exception& failure) {
        std::cerr << "verify_once: " << failure.what() << '\n';
        return unusable;
    }
}
