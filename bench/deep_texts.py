"""Text in several languages, always the same, for documents that are made."""

import random

# Ligatures, accents, numbers, names; enough of each language for its letters to occur.
SENTENCES = {
    "en": """The official staff of the lighthouse filed an affidavit about the difficult flight. Waffles and
coffee were offered to everybody who finished the afternoon shift. A photographer from Fjällbacka
described twenty-seven well-known photographs, in different formats, with extraordinary patience.
International communication requires understanding, imagination and considerable determination. The
temperature of the harbour was measured hourly, and the measurements were published immediately.
Nevertheless the committee recommended refurbishing the observatory before the following winter.""",
    "de": """Der Leuchtturmwärter veröffentlichte außergewöhnliche Aufnahmen der nördlichen Küstenlandschaft.
Schifffahrtsgesellschaften müssen ihre Geschäftsbedingungen regelmäßig überprüfen. Über fünfzig
Straßenbahnfahrer kämpften für größere Führerstände. Die Donaudampfschifffahrt beschäftigte zahllose
Übersetzer, Köche, Bäcker und Maschinisten. Möglicherweise genügt eine ausführliche Beschreibung.""",
    "fr": """Les élèves français préféraient naïvement les œuvres complètes à cette dernière édition. Après la
fenêtre, le château ancien dévoile des façades très soignées. Où étaient les bibliothécaires lorsque les
événements ont commencé à dégénérer? La forêt brûlée renaîtra lentement grâce à une rosée généreuse.""",
    "pl": """Zażółć gęślą jaźń, powiedział żeglarz wieczorem. Świątynia wśród wzgórz przyciągała podróżnych każdego
dnia. Najważniejsze fotografie przechowywano w ciemności przez dziesięciolecia. Źródło rzeki znajduje się
powyżej łąki.""",
    "cs": """Příliš žluťoučký kůň úpěl ďábelské ódy. Fotografové připravovali výstavu několik měsíců. Město nad řekou
zůstává oblíbeným místem návštěvníků. Nejkrásnější obrázky vznikly časně zjara.""",
    "el": """Η φωτογραφία του παλιού φάρου δημοσιεύτηκε χθες στην εφημερίδα. Οι επισκέπτες θαύμασαν τη μεγάλη
βιβλιοθήκη της πόλης. Κάθε άνοιξη τα λουλούδια ανθίζουν στους κήπους της γειτονιάς. Το ταξίδι διήρκεσε
περισσότερο από τέσσερις εβδομάδες.""",
    "ru": """Фотография старого маяка появилась вчера на первой странице газеты. Посетители восхищались огромной
библиотекой городского университета. Каждую весну цветы распускаются в соседних садах. Путешествие
продолжалось больше четырёх недель, несмотря на ужасную погоду.""",
    "ja": """写真家は古い灯台の写真を新聞に発表した。図書館を訪れた人々はその大きさに驚いた。春になると近所の庭に花が咲く。
旅行は四週間以上続いたが、天気はとても悪かった。カメラとレンズの歴史について説明します。""",
    "zh": """摄影师在报纸上发表了旧灯塔的照片。参观者对城市图书馆的规模感到惊讶。每年春天邻近的花园里鲜花盛开。
旅行持续了四个多星期，尽管天气非常糟糕。本章介绍照相机和镜头的历史。""",
    "he": """הצילום של המגדלור הישן פורסם אתמול בעיתון. המבקרים התפעלו מהספרייה הגדולה של העיר. בכל אביב פורחים
הפרחים בגינות השכונה. המסע נמשך יותר מארבעה שבועות למרות מזג האוויר.""",
    "ar": """نشرت صورة المنارة القديمة أمس في الصحيفة. أعجب الزوار بالمكتبة الكبيرة في المدينة. تتفتح الأزهار كل ربيع
في حدائق الحي. استمرت الرحلة أكثر من أربعة أسابيع رغم سوء الأحوال الجوية.""",
}
WITHOUT_BLANKS = {"ja", "zh"}
RIGHT_TO_LEFT = {"he", "ar"}


def paragraphs(language, seed, count=12):
    """`count` paragraphs, in each of which the words of some sentences are shuffled."""
    choice = random.Random(f"{language} {seed}")
    joint = "" if language in WITHOUT_BLANKS else " "
    sentences = " ".join(SENTENCES[language].split("\n"))
    end = "。" if joint == "" else ". "
    pieces = [part.strip() for part in sentences.replace("? ", end).split(end) if part.strip()]
    made = []
    for _ in range(count):
        chosen = choice.choices(pieces, k=5)
        if joint:
            words = " ".join(chosen).replace(".", "").split()
            choice.shuffle(words)
            made.append(" ".join(words) + ".")
        else:
            made.append("。".join(part.replace(" ", "").rstrip("。") for part in chosen) + "。")
    return made


def table(language, seed, rows=8, columns=3):
    """Cells of two words each."""
    choice = random.Random(f"table {language} {seed}")
    if language in WITHOUT_BLANKS:
        words = [part for part in SENTENCES[language].replace("\n", "").replace("，", "。").split("。")
                 if part]
        return [[choice.choice(words)[:8] for _ in range(columns)] for _ in range(rows)]
    words = SENTENCES[language].replace(".", "").replace(",", "").replace("?", "").split()
    return [[" ".join(choice.choices(words, k=2)) for _ in range(columns)] for _ in range(rows)]
