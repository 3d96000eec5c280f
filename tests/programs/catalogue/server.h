#pragma once

#include <memory>
#include <string>

#include "catalogue/catalogue.h"
#include "catalogue/faults.h"

namespace marlet::catalogue {

/// The service on a port of the loopback interface, with its faults and counts:
/// POST /_control sets a fault, DELETE /_control clears them all, GET /_stats tells the counts,
/// GET /_log tells every request in its order, DELETE /_stats starts both anew.
class Server {
public:
    /// An empty token accepts every request.
    Server(Catalogue catalogue, std::string token);
    ~Server();

    void addFault(Fault fault);
    /// Takes the port, or a free one for 0, and gives it; throws std::runtime_error.
    int bind(int port);
    /// Answers until the process ends.
    void serve();

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace marlet::catalogue
