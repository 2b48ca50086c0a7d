#include "harness.h"

#include "test_strings.h"

#include <cstdio>
#include <cstring>

namespace vtest {

HINSTANCE testModule() {
    return GetModuleHandleA(nullptr);
}

// ---- message boxes -------------------------------------------------------------------------

namespace {
MessageBoxCapture *activeCapture = nullptr;

std::string windowText(HWND window) {
    char text[2048] = {};
    GetWindowTextA(window, text, sizeof text);
    return text;
}
} // namespace

MessageBoxCapture::MessageBoxCapture() {
    activeCapture = this;
    hook_ = SetWindowsHookExA(WH_CBT, &MessageBoxCapture::hook, nullptr, GetCurrentThreadId());
}

MessageBoxCapture::~MessageBoxCapture() {
    if (hook_ != nullptr) UnhookWindowsHookEx(hook_);
    if (activeCapture == this) activeCapture = nullptr;
}

LRESULT CALLBACK MessageBoxCapture::hook(int code, WPARAM wParam, LPARAM lParam) {
    if (code == HCBT_ACTIVATE && activeCapture != nullptr) {
        HWND window = reinterpret_cast<HWND>(wParam);
        char className[64] = {};
        GetClassNameA(window, className, sizeof className);
        if (std::string(className) == "#32770") {
            Box box;
            box.caption = windowText(window);
            char text[2048] = {};
            GetDlgItemTextA(window, 0xFFFF, text, sizeof text); // the static text of the box
            box.text = text;
            box.owner = GetWindow(window, GW_OWNER);
            activeCapture->boxes_.push_back(box);
            PostMessageA(window, WM_COMMAND, IDOK, 0);
        }
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

// ---- registry ------------------------------------------------------------------------------

std::string testKeyPath() {
    char path[512] = {};
    LoadStringA(testModule(), IDS_REGKEY, path, sizeof path);
    return path;
}

void removeTestKey() {
    RegDeleteTreeA(HKEY_CURRENT_USER, testKeyPath().c_str());
}

bool testKeyExists() {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, testKeyPath().c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return false;
    RegCloseKey(key);
    return true;
}

bool writeTestValue(const std::string &name, DWORD type, const std::string &data) {
    HKEY key = nullptr;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, testKeyPath().c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                        nullptr, &key, nullptr) != ERROR_SUCCESS)
        return false;
    const LONG rc =
        RegSetValueExA(key, name.c_str(), 0, type, reinterpret_cast<const BYTE *>(data.data()),
                       static_cast<DWORD>(data.size()));
    RegCloseKey(key);
    return rc == ERROR_SUCCESS;
}

bool writeTestDword(const std::string &name, DWORD value) {
    return writeTestValue(name, REG_DWORD,
                          std::string(reinterpret_cast<const char *>(&value), sizeof value));
}

// Reads through the wide interface, which hands back the stored bytes untouched (the ANSI one adds
// a terminating zero to text that was stored without one). Text types come back as the stored
// characters, narrowed one for one; the tests store ASCII only.
std::optional<RegistryValue> readTestValue(const std::string &name) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, testKeyPath().c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return std::nullopt;
    const std::wstring wideName(name.begin(), name.end());
    RegistryValue value;
    DWORD size = 0;
    std::string raw;
    LONG rc = RegQueryValueExW(key, wideName.c_str(), nullptr, &value.type, nullptr, &size);
    if (rc == ERROR_SUCCESS) {
        raw.resize(size);
        rc = RegQueryValueExW(key, wideName.c_str(), nullptr, &value.type,
                              reinterpret_cast<BYTE *>(raw.data()), &size);
        raw.resize(size);
    }
    RegCloseKey(key);
    if (rc != ERROR_SUCCESS) return std::nullopt;
    if (value.type == REG_SZ || value.type == REG_EXPAND_SZ || value.type == REG_MULTI_SZ) {
        for (std::size_t i = 0; i + 1 < raw.size(); i += 2)
            value.data += static_cast<char>(raw[i] | (raw[i + 1] << 8));
    } else {
        value.data = raw;
    }
    return value;
}

// ---- files ---------------------------------------------------------------------------------

std::optional<std::string> readFile(const std::string &path) {
    HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return std::nullopt;
    std::string data;
    char chunk[4096];
    DWORD got = 0;
    while (ReadFile(file, chunk, sizeof chunk, &got, nullptr) && got > 0)
        data.append(chunk, got);
    CloseHandle(file);
    return data;
}

bool writeFile(const std::string &path, const std::string &data) {
    HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    DWORD written = 0;
    const BOOL ok =
        WriteFile(file, data.data(), static_cast<DWORD>(data.size()), &written, nullptr);
    CloseHandle(file);
    return ok && written == data.size();
}

bool fileExists(const std::string &path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// ---- working directory ---------------------------------------------------------------------

namespace {
void removeTree(const std::string &dir) {
    WIN32_FIND_DATAA entry;
    HANDLE find = FindFirstFileA((dir + "\\*").c_str(), &entry);
    if (find != INVALID_HANDLE_VALUE) {
        do {
            const std::string name = entry.cFileName;
            if (name == "." || name == "..") continue;
            const std::string full = dir + "\\" + name;
            if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
                removeTree(full);
            else
                DeleteFileA(full.c_str());
        } while (FindNextFileA(find, &entry));
        FindClose(find);
    }
    RemoveDirectoryA(dir.c_str());
}
} // namespace

ScopedWorkDir::ScopedWorkDir() {
    char current[MAX_PATH] = {};
    GetCurrentDirectoryA(MAX_PATH, current);
    previous_ = current;

    char temp[MAX_PATH] = {};
    GetTempPathA(MAX_PATH, temp);
    static unsigned serial = 0;
    for (;;) {
        char name[MAX_PATH];
        std::snprintf(name, sizeof name, "%svelltest-%lu-%u", temp, GetCurrentProcessId(),
                      ++serial);
        if (CreateDirectoryA(name, nullptr)) {
            path_ = name;
            break;
        }
        if (GetLastError() != ERROR_ALREADY_EXISTS) {
            ADD_FAILURE() << "cannot create a working directory under " << temp;
            return;
        }
    }
    SetCurrentDirectoryA(path_.c_str());
}

ScopedWorkDir::~ScopedWorkDir() {
    SetCurrentDirectoryA(previous_.c_str());
    if (!path_.empty()) removeTree(path_);
}

// ---- windows and data ----------------------------------------------------------------------

HWND createTestWindow() {
    static bool registered = false;
    if (!registered) {
        WNDCLASSA windowClass = {};
        windowClass.lpfnWndProc = DefWindowProcA;
        windowClass.hInstance = testModule();
        windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
        windowClass.lpszClassName = "VellTestWindow";
        registered = RegisterClassA(&windowClass) != 0;
    }
    HWND window = CreateWindowExA(0, "VellTestWindow", "VellBase test", WS_POPUP | WS_VISIBLE, 0, 0,
                                  640, 480, nullptr, nullptr, testModule(), nullptr);
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE))
        DispatchMessageA(&message);
    return window;
}

std::string dataFile(const std::string &name) {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    std::string dir = path;
    dir.resize(dir.find_last_of('\\') + 1);
    return dir + "data\\" + name;
}

int screenDepth() {
    HDC screen = GetDC(nullptr);
    const int bits = GetDeviceCaps(screen, BITSPIXEL);
    ReleaseDC(nullptr, screen);
    return bits;
}

// ---- surfaces ------------------------------------------------------------------------------

SurfaceLock::SurfaceLock(IDirectDrawSurface2 *surface) : surface_(surface) {
    std::memset(&desc_, 0, sizeof desc_);
    desc_.dwSize = sizeof desc_;
    result_ = surface_ != nullptr ? surface_->Lock(nullptr, &desc_, DDLOCK_WAIT, nullptr)
                                  : DDERR_INVALIDPARAMS;
    locked_ = result_ == DD_OK;
}

SurfaceLock::~SurfaceLock() {
    if (locked_) surface_->Unlock(nullptr);
}

std::uint16_t &SurfaceLock::at(int x, int y) {
    return *reinterpret_cast<std::uint16_t *>(static_cast<char *>(desc_.lpSurface) +
                                              y * desc_.lPitch + 2 * x);
}

std::uint32_t pixel16(IDirectDrawSurface2 *surface, int x, int y) {
    SurfaceLock lock(surface);
    return lock.ok() ? lock.at(x, y) : 0xFFFFFFFFu;
}

// ---- fixture -------------------------------------------------------------------------------

void VellTest::SetUp() {
    removeTestKey();
    workDir.emplace();
    boxes.emplace();
}

void ClientTest::SetUp() {
    VellTest::SetUp();
    base.emplace(testModule(), IDS_APPNAME, IDS_REGKEY, true);
    window = createTestWindow();
    base->hWnd = window;
}

void ClientTest::TearDown() {
    closeDevice();
    base.reset();
    if (window != nullptr) DestroyWindow(window);
    VellTest::TearDown();
}

std::string ClientTest::closeAndReadLog() {
    closeDevice();
    base.reset();
    return readFile("VellTest.log").value_or("<no log>");
}

// ---- device lists ------------------------------------------------------------------------------

namespace {
void addDevice(const GUID *guid, const char *description, const char *driver, void *context) {
    EnumeratedDevice d = {};
    if (guid != nullptr) d.guid = *guid;
    d.description = description;
    d.driver = driver;
    static_cast<std::vector<EnumeratedDevice> *>(context)->push_back(d);
}
BOOL WINAPI addDisplay(GUID *guid, LPSTR description, LPSTR driver, LPVOID context) {
    addDevice(guid, description, driver, context);
    return TRUE;
}
BOOL CALLBACK addSound(LPGUID guid, LPCSTR description, LPCSTR module, LPVOID context) {
    addDevice(guid, description, module, context);
    return TRUE;
}
} // namespace

std::vector<EnumeratedDevice> displayDevices() {
    std::vector<EnumeratedDevice> found;
    DirectDrawEnumerateA(addDisplay, &found);
    return found;
}

std::vector<EnumeratedDevice> soundDevices() {
    std::vector<EnumeratedDevice> found;
    DirectSoundEnumerateA(addSound, &found);
    return found;
}

std::string constructionLog(const char *what, const std::vector<EnumeratedDevice> &devices) {
    std::string log = std::string("Initializing ") + what + ":\n";
    for (const EnumeratedDevice &d : devices)
        log += "  Enumerating " + d.description + ":\n  done.\n";
    return log + "done.\n";
}

void expectDeviceList(const structDeviceInfo *record,
                      const std::vector<EnumeratedDevice> &devices) {
    for (const EnumeratedDevice &d : devices) {
        ASSERT_NE(record, nullptr) << "the list is shorter than the enumeration";
        EXPECT_TRUE(IsEqualGUID(record->guid, d.guid)) << d.description;
        EXPECT_EQ(record->lpszDescription, d.description);
        EXPECT_EQ(record->lpszDriverName, d.driver);
        record = record->lpNext;
    }
    EXPECT_EQ(record, nullptr) << "the list is longer than the enumeration";
}

void VellTest::TearDown() {
    // A box the test did not look at (and clear) is a failure of its own.
    for (const auto &box : boxes->boxes())
        ADD_FAILURE() << "unexpected message box \"" << box.caption << "\": " << box.text;
    boxes.reset();
    workDir.reset();
    removeTestKey();
}

} // namespace vtest
