#include "sound/dsound_errors.h"

namespace vell {

namespace {
constexpr std::int32_t code(std::uint32_t bits) {
    return static_cast<std::int32_t>(bits);
}
} // namespace

// Matched by exact value; the names in the comments are the DirectSound headers' own.
const ErrorEntry kDirectSoundErrors[] = {
    {code(0x80004001), "Function not supported!"},                       // DSERR_UNSUPPORTED
    {code(0x80004002), "The requested COM interface is not available!"}, // DSERR_NOINTERFACE
    {code(0x80004005), "Undetermined error occurred inside DirectSound subsystem!"}, // GENERIC
    {code(0x80040110), "Object does not support aggregation!"},            // DSERR_NOAGGREGATION
    {code(0x8007000E), "Out of memory!"},                                  // DSERR_OUTOFMEMORY
    {code(0x80070057), "Invalid parameter!"},                              // DSERR_INVALIDPARAM
    {code(0x8878000A), "Already allocated!"},                              // DSERR_ALLOCATED
    {code(0x8878001E), "The control is not available!"},                   // DSERR_CONTROLUNAVAIL
    {code(0x88780032), "Function not valid for current state of object!"}, // DSERR_INVALIDCALL
    {code(0x88780046),
     "You don't have the priority level required for the function to succeed!"}, // PRIOLEVELNEEDED
    {code(0x88780064), "The specified wave format is not supported!"},           // DSERR_BADFORMAT
    {code(0x88780078), "No sound driver is available for use!"},                 // DSERR_NODRIVER
    {code(0x88780082), "Object already initialized!"},      // DSERR_ALREADYINITIALIZED
    {code(0x88780096), "The buffer memory has been lost!"}, // DSERR_BUFFERLOST
    {code(0x887800A0), "Another application has a higher priority level, preventing this call "
                       "from succeeding!"}, // DSERR_OTHERAPPHASPRIO
    {code(0x887800AA),
     "IDirectSound::Initialize method has been called/called successfully!"}, // UNINITIALIZED
};
const std::size_t kDirectSoundErrorCount = sizeof kDirectSoundErrors / sizeof kDirectSoundErrors[0];

} // namespace vell
