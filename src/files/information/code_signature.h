// Signatures of program files.
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_GetCodeSignInfo( switches ; filePath ): what is known about the signature in the file, in
// lines of this order, those after "Signed" and "Valid" only where they are known:
//
//     Signed: 1 or 0
//     Valid: 1 or 0, whether Windows trusts the signature and the file is as it was signed
//     Status: why it does not, as Windows numbers it, such as 0x800B0109
//     Signer: the name in the signer's certificate
//     Issuer: the name of who issued that
//     ValidFrom: the first and
//     ValidTo: the last moment of the certificate, such as 2026-05-31T23:59:59Z
//
// Nothing is fetched from the network. The system's code for a file that cannot be read.
Result<void> get_code_sign_info(params::Call& call, System& system);

} // namespace vell::files
