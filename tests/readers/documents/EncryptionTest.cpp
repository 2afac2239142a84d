#include "testing/CompressedDocument.h"
#include "tests/readers/documents/PagesOf.h"

#include <gtest/gtest.h>

#include <string>

namespace searchsystem {
namespace {

/// Parts of a document that qpdf 11.3 has encrypted with an empty user password: the content
/// (object 6) is `one`, the metadata (object 2) `<x/>`, a string (object 4) `A string`; all in
/// hexadecimal digits.
struct Fixture {
  std::string encryption;
  std::string content;
  std::string metadata;
  std::string string;
};

const Fixture rc4Of40Bits{
    "<</Filter/Standard/Length 40/O<d8a81f2f756b03f0e776376607dc67c098531ac3e51f6e5cf0fc1"
    "473b1ce0975>/P -4/R 2/U<44b594ea00362f53e87a96ac16c4e21ddd952824f47048646c0bac9e41fa"
    "4b00>/V 1>>",
    "a6e969", "79a07034", "58273fc6a8e3920d"};

const Fixture rc4Of128Bits{
    "<</Filter/Standard/Length 128/O<77b8fb098022d3ab34237ea5643c08710ea5123fc5f88bf993a6"
    "8cca5f12b40f>/P -4/R 3/U<d60e5ec64d57271aae47c0c3a14699a50122456a91bae5134273a6db134"
    "c87c4>/V 2>>",
    "19347a", "26834db1", "407cf0c878558907"};

const Fixture rc4ByCryptFilter{
    "<</CF<</StdCF<</CFM/V2/Length 16>>>>/Filter/Standard/Length 128/O<77b8fb098022d3ab34"
    "237ea5643c08710ea5123fc5f88bf993a68cca5f12b40f>/P -4/R 4/StmF/StdCF/StrF/StdCF/U<d60"
    "e5ec64d57271aae47c0c3a14699a50122456a91bae5134273a6db134c87c4>/V 4>>",
    "19347a", "26834db1", "407cf0c878558907"};

const Fixture aes128{
    "<</CF<</StdCF<</CFM/AESV2/Length 16>>>>/Filter/Standard/Length 128/O<77b8fb098022d3a"
    "b34237ea5643c08710ea5123fc5f88bf993a68cca5f12b40f>/P -4/R 4/StmF/StdCF/StrF/StdCF/U<"
    "d60e5ec64d57271aae47c0c3a14699a50122456a91bae5134273a6db134c87c4>/V 4>>",
    "3f74a438f05eb7059df5501ce5283003e8cdf426915e143b71c5896e8edd90a9",
    "f91c3eaec137bfed426f86797f89c6c427363f60ac66cc92b0a7fc2bcb0a69e5",
    "920ae83f00d211ecdc0e919120548bb3759ccbf8a9dbc8a14ebb4e5857286637"};

const Fixture aes128PlainMetadata{
    "<</CF<</StdCF<</CFM/AESV2/Length 16>>>>/EncryptMetadata false/Filter/Standard/Length"
    " 128/O<77b8fb098022d3ab34237ea5643c08710ea5123fc5f88bf993a68cca5f12b40f>/P -4/R 4/St"
    "mF/StdCF/StrF/StdCF/U<47454d8c9db2b2fde84e070eb90caa3e0122456a91bae5134273a6db134c87"
    "c4>/V 4>>",
    "f9f4842b021ef7ddb0879e6e1a197ae807b0690427e71e1a4de4914ba36b8c66", "3c782f3e",
    "4f9fa69f117f74d4a5bb1be16bc9acdb435fd5de11a05b787f85eb215631c94d"};

const Fixture aes256Revision5{
    "<</CF<</StdCF<</CFM/AESV3/Length 32>>>>/Filter/Standard/Length 256/O<56d528e77f4c487"
    "720d4db4b52f5f6e679e295bb85e6adebdd95f953acf9d906a35e6f6f1610ad9330919ef94a126853>/O"
    "E<42295b10f507f2306943c80a978ad607b269e776596345cd3506ee4b41532ea5>/P -4/Perms<d1907"
    "40014548217668fe6a2cf93dacd>/R 5/StmF/StdCF/StrF/StdCF/U<b6b7f8667b20ec0ad9251bfe1af"
    "f5b3863bd6f3daafcd29416bfe4f8aa70106f71267aa9ea5f00b0cfe7a08e36fa7b98>/UE<1434b4e7af"
    "942179f948d97aa411f8b9359fa08427d35307148bd883669c64a6>/V 5>>",
    "a0d1137139c2772735907cf45bc82bf5920f75d1794ebc0529bade3c1275dba3",
    "d15ae22aa0c907cfa5ea36c7fb94e256b09061a77c7e2c96d6fce44116d017ab",
    "51bfa104eb72939302b75e93a467faa18deea9bfd83a0f6b7d304ad06d84855f"};

const Fixture aes256{
    "<</CF<</StdCF<</CFM/AESV3/Length 32>>>>/Filter/Standard/Length 256/O<ebdfbbeab6d9d91"
    "addf56baa7adc826aaaf3da9842cac069e47fcb01973fc5ceca66a9a2f1deaaaee255464c8af5a7f1>/O"
    "E<c438c2a42d295534a48b2a61d7eb2b2018ce6dfb44ef1b65ef9632988ff6f7e3>/P -4/Perms<6a248"
    "7e1238aa39c5afabf254183e569>/R 6/StmF/StdCF/StrF/StdCF/U<f1e14b792f58efa603dbf644f0a"
    "ed8455dc8cd2564cd9f1fdeef696682977b9615fb2e94d449b24da5564a99cc3bebaa>/UE<4e0db32c2f"
    "d7a7a299ef8d7b9997993954ad5ff14971ca5546f6620ddf568423>/V 5>>",
    "9051734b4d2bef554ef01deab5181dc1362d9656a4789134fd1df097a452a059",
    "71c91bc31ace2b2d2f20542a45157c38ebfca75a077352dc0c536547b7f2ffed",
    "9db4d10f4dbe8676f4a9a861a1c5b2ba1ea93145cc68ce5ba8a90643b04a5867"};

std::string bytesOf(const std::string &hex) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
    bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  return bytes;
}

Fixture with(Fixture fixture, const std::string &from, const std::string &to) {
  const std::size_t place = fixture.encryption.find(from);
  EXPECT_NE(place, std::string::npos) << from;
  fixture.encryption.replace(place, from.size(), to);
  return fixture;
}

struct Row {
  std::string name;
  Fixture fixture;
  std::string texts = "one <x/> A string";
  std::string contentEntries{};
};

void PrintTo(const Row &row, std::ostream *out) { *out << row.name; }

class EncryptionTest : public testing::TestWithParam<Row> {};

TEST_P(EncryptionTest, Opens) {
  const Fixture &fixture = GetParam().fixture;
  const std::string file = CompressedDocument()
                               .object(1, "<</Type/Catalog/Pages 3 0 R/Metadata 2 0 R/T 4 0 R>>")
                               .stream(2, "/Type/Metadata", bytesOf(fixture.metadata))
                               .object(3, "<</Kids[5 0 R]>>")
                               .object(4, "<" + fixture.string + ">")
                               .object(5, "<</Contents 6 0 R>>")
                               .stream(6, GetParam().contentEntries, bytesOf(fixture.content))
                               .object(7, fixture.encryption)
                               .table("/ID[<AB><CD>]/Encrypt 7 0 R")
                               .text;
  MemorySource source(file);
  const auto opened = Document::open(source);
  if (const auto *reason = std::get_if<UnreadReason>(&opened)) {
    EXPECT_EQ(*reason, UnreadReason::needsPassword);
    EXPECT_EQ(GetParam().texts, "");
    return;
  }
  Document &document = *std::get<0>(opened);
  EXPECT_TRUE(document.isEncrypted());
  const Dictionary catalog = document.catalog();
  std::string texts;
  document.forEachPage([&](const Page &page) {
    texts += document.decoded(*document.get(page.dictionary, "Contents").stream(), 100);
    return true;
  });
  texts += " " + document.decoded(*document.get(catalog, "Metadata").stream(), 100) + " ";
  EXPECT_EQ(texts.append(document.get(catalog, "T").string()), GetParam().texts);
}

const Fixture identity{with(aes128, "/StmF/StdCF", "/StmF/Identity").encryption, "6f6e65",
                       "3c782f3e", aes128.string};
Fixture byName() {
  Fixture fixture = identity;
  fixture.content = aes128.content;
  return fixture;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, EncryptionTest,
    testing::Values(Row{"RC4Of40Bits", rc4Of40Bits}, Row{"RC4Of128Bits", rc4Of128Bits},
                    Row{"RC4ByCryptFilter", rc4ByCryptFilter}, Row{"AES128", aes128},
                    Row{"AES128PlainMetadata", aes128PlainMetadata},
                    Row{"AES256Revision5", aes256Revision5}, Row{"AES256", aes256},
                    Row{"LengthInBytes", with(rc4Of128Bits, "/Length 128", "/Length 16")},
                    Row{"LengthMissing", with(aes128, "/Length 128", "")},
                    Row{"IdentityForStreams", identity},
                    Row{"CryptFilterByName", byName(), "one <x/> A string",
                        "/Filter/Crypt/DecodeParms<</Name/StdCF>>"},
                    Row{"CryptFilterIdentity",
                        {aes128.encryption, identity.content, aes128.metadata, aes128.string},
                        "one <x/> A string",
                        "/Filter[/Crypt]"},
                    Row{"OtherPassword40", with(rc4Of40Bits, "/U<44", "/U<45"), ""},
                    Row{"OtherPassword128", with(aes128, "/U<d6", "/U<d7"), ""},
                    Row{"OtherPassword256", with(aes256, "/U<f1", "/U<f2"), ""},
                    Row{"OtherHandler", with(aes128, "/Standard", "/Adobe.PubSec"), ""},
                    Row{"NoEntries", {"<</V 5/R 6>>", "", "", ""}, ""}),
    [](const auto &tested) { return tested.param.name; });

// Neither the stream of objects nor what is in it is found before the encryption is known; strings
// in it are not encrypted once more.
TEST(EncryptionRepairTest, OpensObjectStreams) {
  const std::string encryption =
      "<</CF<</StdCF<</CFM/AESV3/Length 32>>>>/EncryptMetadata false/Filter/Standard/Leng"
      "th 256/O<0ee7f0a7c13c22cd245fd5a10054cc05af35ba8eb82a2c87507233beef7ae46cf2c820540"
      "6c2feb704601b4addb0c3d6>/OE<c158bbe8e06cf5c5be76c940f88bd694511bbcee97819e0dd92b17"
      "32d5979230>/P -4/Perms<5156b897d629533e63768c30e16c8da9>/R 6/StmF/StdCF/StrF/StdCF"
      "/U<92a3f69e81b026a2e81f3f6e8c931c86e62c789f0b6c6bf3f227461f07cdfcbb1ca51e70838818b"
      "e4ed034e9a00004f0>/UE<d74f7857885b206219bdb21c3ca603234fa2edc8dbf267698e4d8454e8e7"
      "62cd>/V 5>>";
  const std::string objects =
      "72346a0b9c080ff55efc18969554c398db9f516dfd7b0bd6593a83bfb558e6af540aadbd90d2b1d072"
      "768871c8589f26c4cdd01c50ef1e39dc3a70d4954ac409e64b34d10fb34b2bc145a4804bb110b513b5"
      "75890ab790effa329083613d719af740b7c32a56d07bf9b432182bceba59381a3264b381dfc86db53a"
      "9fafac2ee4f5ede3834ff508e9b1ad615b66527ab0";
  const std::string content = "6dd3c00dd29b24bcb711b842025c0b6024d1358f9dd4d5f863559ab053ec23a2";
  const std::string file =
      CompressedDocument()
          .object(1, "<</Type/Catalog/Pages 4 0 R/T 6 0 R>>")
          .stream(3, "/Type/ObjStm/Filter/FlateDecode/N 3/First 15", bytesOf(objects))
          .stream(7, "/Filter/FlateDecode", bytesOf(content))
          .object(8, encryption)
          .raw("trailer<</Root 1 0 R/Encrypt 8 0 R>>")
          .text;
  EXPECT_EQ(pagesOf(file), "one|");
  MemorySource source(file);
  const auto opened = Document::open(source);
  Document &document = *std::get<0>(opened);
  EXPECT_EQ(document.get(document.catalog(), "T").string(), "A string");
}

} // namespace
} // namespace searchsystem
