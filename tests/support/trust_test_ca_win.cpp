// Adds the test CA to, or removes it from, the current user's Root store, so
// WinHTTP (under Wine: inside the test prefix) trusts the test HTTPS host.
//   vl_trust_test_ca add|remove <ca.der>
#include <windows.h>
#include <wincrypt.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

std::vector<BYTE> ReadBytes(const wchar_t* path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

bool Add(HCERTSTORE store, const std::vector<BYTE>& der) {
  return CertAddEncodedCertificateToStore(store, X509_ASN_ENCODING, der.data(), static_cast<DWORD>(der.size()),
                                          CERT_STORE_ADD_REPLACE_EXISTING, nullptr);
}

bool Remove(HCERTSTORE store, const std::vector<BYTE>& der) {
  PCCERT_CONTEXT wanted = CertCreateCertificateContext(X509_ASN_ENCODING, der.data(), static_cast<DWORD>(der.size()));
  if (!wanted) return false;
  PCCERT_CONTEXT found = CertFindCertificateInStore(store, X509_ASN_ENCODING, 0, CERT_FIND_EXISTING, wanted, nullptr);
  CertFreeCertificateContext(wanted);
  // Deleting frees `found`; a certificate that is not there is already removed.
  return !found || CertDeleteCertificateFromStore(found);
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc != 3) {
    std::fputs("usage: vl_trust_test_ca add|remove <ca.der>\n", stderr);
    return 2;
  }
  const std::wstring action = argv[1];
  const auto der = ReadBytes(argv[2]);
  if (der.empty() || (action != L"add" && action != L"remove")) {
    std::fputs("vl_trust_test_ca: bad action or unreadable certificate\n", stderr);
    return 2;
  }
  HCERTSTORE store = CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"Root");
  if (!store) {
    std::fprintf(stderr, "vl_trust_test_ca: cannot open the Root store (%lu)\n", GetLastError());
    return 1;
  }
  const bool done = action == L"add" ? Add(store, der) : Remove(store, der);
  if (!done) std::fprintf(stderr, "vl_trust_test_ca: %ls failed (%lu)\n", action.c_str(), GetLastError());
  CertCloseStore(store, 0);
  return done ? 0 : 1;
}
