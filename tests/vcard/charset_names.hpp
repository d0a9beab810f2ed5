#pragma once

#include <array>
#include <string_view>

namespace ox::vcard {

// Forty names that people have in each charset: "family,given", parted by bars. None of them is
// a whole name of the samples that charsets are judged by (ox/base/charsets/name_samples.cpp).
// scripts/measure_charsets reads this table too.
struct CharsetNames {
  std::string_view charset;
  std::string_view locale;
  std::string_view names;
};

inline constexpr std::array kCharsetNames = {
    CharsetNames{"GB18030", "zh_CN.UTF-8",
                 "王,建国|李,秀英|张,伟|刘,洋|陈,静|杨,丽娟|赵,志强|黄,海燕|周,杰|吴,晓燕|"
                 "徐,国庆|孙,丽|胡,明|朱,雪梅|高,峰|林,小红|何,俊杰|郭,婷婷|马,超|罗,文斌|"
                 "梁,志华|宋,佳|郑,浩然|谢,雨欣|韩,冰|唐,子轩|冯,桂英|于,洋|董,建军|萧,然|"
                 "程,思远|曹,玉兰|袁,立新|邓,家豪|许,晴|傅,红霞|沈,一鸣|曾,国强|彭,宇|吕,欣怡"},
    CharsetNames{"Big5", "zh_TW.UTF-8",
                 "陳,志明|林,淑芬|黃,俊傑|張,雅婷|李,宗翰|王,怡君|吳,美玲|劉,家豪|蔡,依玲|楊,宗穎|"
                 "許,瑋婷|鄭,文華|謝,佩珊|郭,明哲|洪,秀琴|曾,國棟|邱,永澤|廖,麗華|賴,清泉|徐,若琳|"
                 "周,杰民|葉,舒華|蘇,貞安|莊,凱勛|呂,秀菁|江,宜蓁|何,潤生|蕭,敬文|羅,志成|高,士捷|"
                 "潘,瑋廷|簡,嫚君|朱,立安|鍾,漢文|彭,于庭|游,錫明|詹,宏仁|胡,慧君|施,明宏|沈,玉芳"},
    CharsetNames{
        "Shift_JIS", "ja_JP.UTF-8",
        "佐藤,健一|鈴木,美咲|高橋,大輔|田中,裕子|伊藤,翔太|渡辺,直美|山本,太郎|中村,優子|"
        "小林,誠|加藤,恵子|吉田,拓也|山田,花子|佐々木,亮|山口,智子|松本,潤一|井上,和也|"
        "木村,さくら|林,真由美|斎藤,隆|清水,愛|山崎,剛|森,千尋|池田,浩二|橋本,奈々|"
        "阿部,慎一|石川,由紀|前田,あつこ|藤田,正|小川,直樹|岡田,めぐみ|後藤,久美|長谷川,進|"
        "村上,春奈|近藤,修|石井,綾|坂本,龍太|遠藤,ケンジ|青木,志保|藤井,貴之|西村,恭太"},
    CharsetNames{"EUC-JP", "ja_JP.UTF-8",
                 "福田,康夫|太田,光子|三浦,良知|藤原,紀代|岡本,信彦|松田,聖|中島,美香|中川,祥子|"
                 "原田,世津子|小野,伸也|竹内,結衣|田村,正樹|金子,賢|和田,明美|中山,雅史|石田,純平|"
                 "上田,晋平|森田,剛志|原,せつ子|柴田,恭平|酒井,紀子|工藤,静江|横山,やすし|宮崎,俊|"
                 "宮本,武|内田,裕太|高木,マリ|安藤,美樹|谷口,浩|大野,智也|丸山,隆|今井,絵理|"
                 "高田,純|藤本,敏夫|武田,鉄男|村田,亮太|上野,由里|杉山,愛子|増田,明|平野,エミ"},
    CharsetNames{"EUC-KR", "ko_KR.UTF-8",
                 "김,민수|이,서연|박,지훈|최,영희|정,현우|강,수정|조,성민|윤,미경|장,동현|임,재민|"
                 "한,지민|오,세진|서,태진|신,민지|권,상욱|황,정민|안,성호|송,혜진|류,승민|전,지영|"
                 "홍,길수|고,은정|문,채원|양,현수|손,예슬|배,용수|백,종민|허,준호|유,재훈|남,기훈|"
                 "심,은주|노,희정|하,지영|곽,도현|성,시현|차,태호|주,진호|우,병우|구,혜숙|민,병호"},
    CharsetNames{
        "windows-1250", "pl_PL.UTF-8",
        "Wiśniewski,Paweł|Dąbrowska,Zofia|Kamiński,Łukasz|Zieliński,Michał|Woźniak,Elżbieta|"
        "Szymański,Rafał|Jabłońska,Katarzyna|Krawczyk,Grażyna|Wróbel,Stanisław|Pawłowska,"
        "Małgorzata|"
        "Novák,Jiří|Dvořáková,Lenka|Černý,Tomáš|Procházka,Ondřej|Kučera,Václav|"
        "Veselá,Božena|Horák,Luděk|Němcová,Šárka|Pokorný,Zdeněk|Růžička,Miloš|"
        "Kovács,Gergő|Szabó,Erzsébet|Tóth,László|Horváth,Györgyi|Kiss,Tünde|"
        "Molnár,Zoltán|Németh,Ferenc|Farkas,Sándor|Baláž,Ľubomír|Hudák,Štefan|"
        "Kovačič,Matjaž|Žnidaršič,Maja|Babić,Željko|Marković,Ivan|Jurić,Krešimir|"
        "Perić,Đurđa|Ionescu,Ştefan|Popa,Mădălina|Stančík,Radoslav|Żak,Andrzej"},
    CharsetNames{
        "windows-1251", "ru_RU.UTF-8",
        "Смирнов,Алексей|Иванова,Ольга|Кузнецов,Дмитрий|Попова,Елена|Васильев,Сергей|"
        "Петрова,Наталья|Соколов,Михаил|Михайлова,Юлия|Новиков,Артём|Фёдорова,Ирина|"
        "Морозов,Виктор|Волкова,Анастасия|Алексеев,Игорь|Лебедева,Светлана|Семёнов,Павел|"
        "Егорова,Дарья|Козлов,Евгений|Степанова,Марина|Орлов,Николай|Жукова,Ксения|"
        "Шевченко,Тарас|Бондаренко,Олеся|Коваленко,Юрій|Ткаченко,Ірина|Кравчук,Лариса|"
        "Мельник,Оксана|Поліщук,Андрій|Гриценко,Наталія|Їжак,Богдан|Лисенко,Євген|"
        "Георгиев,Христо|Димитрова,Цветелина|Стоянов,Петър|Тодорова,Гергана|Иванов,Красимир|"
        "Щербаков,Глеб|Цой,Валентин|Чехонин,Антон|Хабарова,Эльвира|Юдин,Ян"},
    CharsetNames{
        "KOI8-R", "ru_RU.UTF-8",
        "Соловьёв,Владимир|Зайцева,Татьяна|Павлов,Константин|Голубева,Вера|Виноградов,Андрей|"
        "Богданова,Мария|Воробьёв,Денис|Тарасова,Людмила|Белов,Роман|Комарова,Галина|"
        "Киселёв,Кирилл|Макарова,Надежда|Андреев,Илья|Ковалёва,Алина|Ильин,Максим|"
        "Гусева,Полина|Титов,Георгий|Кузьмина,Любовь|Кудрявцев,Вадим|Баранова,Инна|"
        "Куликов,Антон|Алексеева,Вероника|Яковлев,Станислав|Сорокина,Нина|Сергеев,Борис|"
        "Романова,Кристина|Захаров,Руслан|Борисова,Валентина|Королёв,Анатолий|Герасимова,Лариса|"
        "Пономарёв,Олег|Григорьева,Евгения|Лазарев,Пётр|Медведева,Валерия|Ершов,Тимофей|"
        "Никитина,Софья|Соболев,Никита|Рябова,Жанна|Поляков,Эдуард|Цветкова,Яна"},
    CharsetNames{
        "windows-1252", "de_DE.UTF-8",
        "Müller,Jürgen|Schäfer,Günther|Köhler,Sören|Weiß,Bärbel|Größmann,Käthe|"
        "Böhm,Rüdiger|Jäger,Björn|Grünwald,Hänsel|Strauß,Jörg|Völker,Götz|"
        "Lefèvre,François|Béranger,Hélène|Lécuyer,Gaël|Desprès,Zoé|Côté,Benoît|"
        "Garçon,Aurélie|Dubé,Rémi|Châtelain,Anaïs|Muñoz,José|García,María|"
        "Núñez,Begoña|Hernández,Andrés|Ibáñez,Sofía|Peña,Ángel|Gonçalves,João|"
        "Conceição,António|Magalhães,Inês|Simões,Luís|Åkesson,Märta|Sjöberg,Håkan|"
        "Lindström,Åsa|Sørensen,Jørgen|Nørgaard,Søren|Ødegård,Pål|Hämäläinen,Väinö|"
        "Mäkelä,Päivi|Þorsteinsdóttir,Guðrún|Jónsson,Ragnheiður|Pellè,Niccolò|Brännström,Örjan"},
    CharsetNames{
        "windows-1253", "el_GR.UTF-8",
        "Παπαδόπουλος,Γιώργος|Παππάς,Δημήτρης|Καραγιάννης,Κώστας|Βλάχος,Νίκος|Ιωαννίδης,Γιάννης|"
        "Οικονόμου,Μαρία|Παπαγεωργίου,Ελένη|Μακρής,Χρήστος|Αγγελόπουλος,Βασίλης|Σαμπάνης,Αντώνης|"
        "Δημητρίου,Κατερίνα|Νικολάου,Σοφία|Βασιλείου,Άννα|Γεωργίου,Παναγιώτης|Κωνσταντίνου,"
        "Ευαγγελία|"
        "Αθανασίου,Θανάσης|Παπανικολάου,Μιχάλης|Χατζής,Σπύρος|Τσιπάς,Αλέξης|Λάμπρου,Ιωάννα|"
        "Μπακάλης,Στέλιος|Σταθόπουλος,Ηλίας|Κοντός,Πέτρος|Ζαχαρίου,Ζωή|Φωτίου,Φώτης|"
        "Ξενάκης,Ιάννης|Ψαρράς,Λευτέρης|Ραφαηλίδης,Βαγγέλης|Ρήγας,Θεόδωρος|Αλεξίου,Χάρις|"
        "Μερκούρης,Ασπασία|Θεοδωράκης,Μάριος|Καζάκης,Στέφανος|Ελευθερίου,Οδυσσέας|Σερέτης,Ιάκωβος|"
        "Τριανταφύλλου,Δέσποινα|Κυριακίδης,Αχιλλέας|Γκίκας,Τάσος|Ντόρας,Ρένα|Ευθυμίου,Έφη"},
    CharsetNames{"windows-1254", "tr_TR.UTF-8",
                 "Yılmaz,Ayşe|Şahin,Mustafa|Çelik,Hüseyin|Yıldız,İbrahim|Öztürk,Zeynep|"
                 "Aydın,Özlem|Arslan,Gökhan|Doğan,Çağla|Kılıç,Murat|Aslan,Büşra|"
                 "Çetin,İsmail|Koç,Şükrü|Kurt,Gülşen|Özkan,Uğur|Şimşek,Tuğba|"
                 "Güneş,Işıl|Aktaş,Erdoğan|Yalçın,Ömer|Bozkurt,Çiğdem|Güler,Oğuz|"
                 "Yavuz,Müjde|Ateş,Barış|Işık,Ferhat|Kaplan,Gülay|Bulut,Hatice Nağme|"
                 "Türk,Tolga|Gül,Selim|Özdemir,Kübra|Taş,Sinan|Korkmaz,Ünal|"
                 "Çakır,Nesrin|Erdem,Şebnem|Karataş,Yiğit|Özer,İpek|Sarı,Begüm|"
                 "Tekin,Doğukan|Ünlü,Vedat|Coşkun,Melih|Keskin,Göksel|Dağ,Fırat"},
    CharsetNames{
        "windows-1255", "he_IL.UTF-8",
        "כהן,יוסי|לוי,רחל|מזרחי,דוד|פרץ,שרה|ביטון,משה|דהן,מיכל|אברהם,יעקב|פרידמן,נועה|"
        "אגבאריה,תמר|מלכה,אבי|אזולאי,רונית|כץ,איתן|יוסף,חנה|עמר,גלית|אוחיון,ניר|חדד,שירה|"
        "גבאי,אורי|בן דוד,עדי|אדרי,ליאור|לביא,טלי|טל,עומר|קליין,יונתן|שפירא,דנה|רוזן,אלון|"
        "גולן,יעל|שחר,הדס|וייס,מרדכי|סגל,אסתר|הורוביץ,נתן|אלמוג,כרמית|ברק,אהובה|שטרן,יצחק|"
        "גרין,צבי|רביב,דליה|נחום,אורלי|זהבי,עודד|פלד,גיא|הראל,שלומית|צור,אליעזר|קפלן,ברוך"},
};

}  // namespace ox::vcard
