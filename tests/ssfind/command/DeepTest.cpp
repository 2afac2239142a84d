#include "testing/CompressedDocument.h"
#include "testing/PhotoFile.h"
#include "tests/ssfind/command/Command.h"

namespace searchsystem {

namespace {

class DeepTest : public CommandTest {
protected:
  /// A document of one page, which uses Helvetica as F.
  static std::string document(const std::string &content) {
    return CompressedDocument()
        .object(1, "<< /Type /Catalog /Pages 2 0 R >>")
        .object(2, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>")
        .object(3, "<< /Type /Page /Parent 2 0 R /Contents 4 0 R /MediaBox [0 0 600 800] "
                   "/Resources << /Font << /F 5 0 R >> >> >>")
        .deflatedStream(4, "", content)
        .object(5, "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>")
        .crossReferenceStream(6)
        .text;
  }
};

TEST_F(DeepTest, DocumentsAndKinds) {
  tree.file("letter.pdf", document("BT /F 12 Tf 10 700 Td (The har-) Tj 0 -14 Td (bour) Tj ET"));
  tree.file("in/scan.pdf", document("10 10 50 50 re f"));
  tree.file("broken.PDF", "broken");
  tree.file("photo.jpeg", jpegFile({}));
  tree.file("note.txt");
  const std::string two =
      "ssfind: 2 files could not be read: damaged (1), no text (1) (--unread lists them)\n";
  const std::string listed =
      "damaged             ./broken.PDF\nno text             ./in/scan.pdf\n";
  expect({
      {{}, "./broken.PDF\n./in/scan.pdf\n./letter.pdf\n./photo.jpeg\n"},
      {{"--plain"}, "./broken.PDF\n./in/scan.pdf\n./letter.pdf\n"},
      {{"-k", "the harbour"}, "./letter.pdf\n", two},
      {{"-k", "the harbour", "--in", "pdf", "--count"}, "1\n", two},
      {{"-k", "the harbour", "--in", "exif"}, "", "", 1},
      {{"-k", "the harbour", "--plain"}, "", "", 1},
      {{"-k", "the harbour", "--any", "-n", "broken"},
       "./broken.PDF\n./letter.pdf\n",
       "ssfind: 1 file could not be read: no text (1) (--unread lists them)\n"},
      {{"-k", "the harbour", "-q"}, ""},
      {{"-k", "nothing", "-q"}, "", "", 1},
      {{"-k", "the harbour", "--unread"}, listed},
      {{"-k", "nothing", "--unread"}, listed, "", 1},
      {{"-k", "nothing", "--unread", ".", "in", tree.path()}, listed, "", 1},
      {{"-k", "the harbour", "--files-from", "-"},
       "letter.pdf\n",
       "",
       0,
       "letter.pdf\nphoto.jpeg\n"},
      {{"-n", "nothing", "--unread"}, "", "", 1},
  });
  EXPECT_EQ(run({"in", "-k", "nothing", "--unread", "-0"}).out,
            std::string("no text             in/scan.pdf\0", 32));
}

TEST_F(DeepTest, Photographs) {
  const auto described = [](const std::string &text) {
    return jpegFile({jpegSegment(0xFE, text)});
  };
  tree.file("plain.jpg", jpegFile({PhotoTags::photo()
                                       .text(0, 0x010E, "the harbour")
                                       .taken("2020:02:03 04:05:06")
                                       .exifSegment()}));
  tree.file("comment.JPEG", described("The  harbour\nat night"));
  tree.file("beside.heic", jpegFile({}));
  tree.file("beside.xmp", R"(<x:xmpmeta xmlns:x="adobe:ns:meta/"><rdf:RDF
      xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#"><rdf:Description
      xmlns:photoshop="http://ns.adobe.com/photoshop/1.0/"
      photoshop:Headline="A harbour" photoshop:DateCreated="2021-02"/></rdf:RDF></x:xmpmeta>)");
  tree.file("broken.jpg", "broken");
  tree.file("drawing.sketch");
  const std::string one = "ssfind: 1 file could not be read: damaged (1) (--unread lists them)\n";
  expect({
      {{"-k", "harbour"}, "./beside.heic\n./comment.JPEG\n./plain.jpg\n", one},
      {{"-k", "HARBOUR AT", "--in", "exif"}, "./comment.JPEG\n", one},
      {{"-k", "harbour", "-s", "--in", "exif", "-n", "comment"}, "./comment.JPEG\n"},
      {{"-k", "harbour", "--plain"}, "./plain.jpg\n"},
      {{"-k", "harbour", "--in", "pdf"}, "", "", 1},
      {{"-t", "2020..2021"}, "./beside.heic\n./plain.jpg\n", one},
      {{"-t", "2021-02-01T00:00", "-k", "harbour"}, "./beside.heic\n", one},
      {{"-t", "2020", "-k", "night", "--any"}, "./comment.JPEG\n./plain.jpg\n", one},
      {{"-k", "nothing", "--unread"}, "damaged             ./broken.jpg\n", "", 1},
      {{"-e", "sketch", "-e", ".JPEG"}, "./comment.JPEG\n./drawing.sketch\n"},
      {{"-e", "sketch", "-e", "jpeg", "-k", "harbour"}, "./comment.JPEG\n"},
  });
}

} // namespace

} // namespace searchsystem
