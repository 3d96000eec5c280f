#pragma once

namespace marlet {

/// What a crashing process leaves behind.
namespace CoreDumps {

/// No image of this process's memory is written from now on, neither to a file nor to a program
/// that collects them: it would hold the service token. Children get the same limit.
void forbid();

}  // namespace CoreDumps
}  // namespace marlet
