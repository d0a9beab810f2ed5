#include "ox/base/charsets/name_samples.hpp"

#include <array>

namespace ox {
namespace {

constexpr std::array kAlphabets = {
    AlphabetSample{
        "de",
        "Müller Jürgen Günter Schröder Schäfer Köhler König Krüger Böhm Jäger Weiß Groß Große "
        "Björn "
        "Sören Jörg Jörn Käthe Bärbel Ännchen Rüdiger Lüdke Lübke Löffler Löwe Möller Mößner "
        "Nägele "
        "Nüßle Öhler Österreich Straße Hauptstraße Schloßstraße Düsseldorf Köln München Nürnberg "
        "Würzburg Tübingen Zürich Göttingen Lüneburg Fürth Förster Fröhlich Grün Grüner Gärtner "
        "Günther Häußler Hübner Hänsel Höfer Hörmann Kühn Küster Kästner Läufer Mühlbauer Pfänder "
        "Röder Rößler Rüth Sänger Säger Schön Schönfeld Schüler Schütz Schäuble Stöcker Stößel Süß "
        "Töpfer Übel Völker Wörner Wünsche Zöllner Zängerle Geschäftsführer Büro Grüße über für "
        "Präsident Vorstandsmitglied Universität Gebäude Straßburg Preuß Heß Faßbender Kaiß"},
    AlphabetSample{
        "fr",
        "François Françoise Hélène Jérôme Frédéric Éric Étienne André Andrée René Renée Agnès "
        "Thérèse Benoît Noël Gaël Joël Raphaël Anaïs Loïc Zoé Chloé Léa Théo Mélanie Céline "
        "Aurélie "
        "Véronique Cédric Gérard Stéphane Stéphanie Sébastien Rémy Rémi Lefèvre Lefébvre Béranger "
        "Bérard Côté Châtelain Lécuyer Beauséjour Garçon Prévost Prévert Geneviève Hébert Leclère "
        "Dufrêne Duchêne Lemaître Fernández Crépin Mégane Moïse Héloïse Léon Dupré Desprès "
        "Forêt Hôpital Hôtel Évêque Général Société Élysées Genève Orléans Besançon "
        "Nîmes Québec Montréal Liège Président Secrétaire Député Café"},
    AlphabetSample{
        "es",
        "José María García Martínez López Sánchez González Rodríguez Fernández Pérez Gómez Martín "
        "Jiménez Hernández Díaz Álvarez Muñoz Gutiérrez Vázquez Domínguez Núñez Ibáñez Peña "
        "Ordóñez "
        "Ramírez Suárez Méndez Bermúdez Ángel Ángela Andrés Jesús Inés Iñaki Íñigo Begoña Raúl "
        "Óscar Sofía Lucía Joaquín Julián Adrián Ramón Nicolás Tomás Hernán Germán Rocío Mónica "
        "Verónica Ñuñoa España Málaga Cádiz León Córdoba Castellón Perú México Bogotá Medellín "
        "Dirección Teléfono Compañía Avenida Concepción Asunción Begoñes Zúñiga Güell Agüero"},
    AlphabetSample{
        "pt",
        "João António José Luís Inês Mário Márcia Cláudio Cláudia Patrícia Antônio Fábio Flávio "
        "Vinícius Lúcia Júlio Glória Sérgio Sônia Sónia Conceição Assunção Gonçalo Gonçalves "
        "Simões "
        "Magalhães Guimarães Araújo Falcão Leitão Brandão Falcões Galvão Lourenço Mendonça França "
        "Graça Bragança Sá Paixão Simão Sebastião Estevão Damião Adão Romão Camões Antão "
        "São Brasília Goiás Maranhão Ceará Paraná Belém Évora Setúbal Portimão Informações "
        "Direção"},
    AlphabetSample{
        "sv",
        "Åsa Åke Åkesson Håkan Göran Björn Jörgen Sören Märta Pär Örjan Östen Östberg Sjöberg "
        "Sjögren Sjöström Lindström Bergström Nyström Holmström Strömberg Söderberg Söderström "
        "Nordström Öberg Öhman Åberg Åström Ångström Mårtensson Måns Jönsson Håkansson Löfgren "
        "Björklund Hägg Häggström Kjellström Käll Malmö Göteborg Västerås Jönköping Örebro "
        "Stadsgården Skåne Hälsingborg Väinö Päivi Mäkinen Mäkelä Hämäläinen Virtanen Järvinen "
        "Nieminen Heikkilä Leppänen Jääskeläinen Jyväskylä Hyvönen Pöllänen Töölö Ylönen "
        "Kärkkäinen"},
    AlphabetSample{
        "da",
        "Søren Jørgen Jørn Bjørn Søndergaard Nørgaard Sørensen Jørgensen Mørch Møller Kjær "
        "Kærsgaard "
        "Bæk Lærke Tværgaard Æbelø Åge Ågård Pål Håkon Gråbrødre Nygård Ødegård Østergaard Øyvind "
        "Øystein Bjørnstad Solbjørg Sæther Sætre Særvik Næss Hjørring Tromsø Bodø Århus Aalborg "
        "Nørrebro Østerbro København Ålesund Gjøvik Brønnøy Trøndelag Kåre Småland Skårup "
        "Guðrún Þór Þorsteinn Þórður Sigurður Jón Jónsson Ragnheiður Björk Ólafur Ólafsdóttir "
        "Guðmundur Guðmundsdóttir Einarsdóttir Ásgeir Ástríður Sigríður Kristín Reykjavík Æsir"},
    AlphabetSample{
        "it",
        "Niccolò Nicolò Pellè Salvaggiò Libertà Forlì Città Università Società Cantù Mercì Zanè "
        "Dessì Salò Pardè Nanì Bonè Andrè Roccò Cefalù Calabrò Fà Nardò Però Là Più"},
    AlphabetSample{
        "pl",
        "Wójcik Kowalczyk Kamiński Lewandowski Zieliński Szymański Woźniak Dąbrowski Kozłowski "
        "Jankowski Wojciechowski Kwiatkowski Krawczyk Piotrowski Grabowski Pawłowski Michałowski "
        "Król "
        "Wieczorek Jabłoński Wróbel Nowakowski Majewski Olszewski Stępień Jaworski Malinowski "
        "Pawlak "
        "Górski Gołębiowski Łukasz Michał Paweł Rafał Stanisław Zdzisław Władysław Bronisław "
        "Jarosław "
        "Mirosław Wacław Małgorzata Elżbieta Grażyna Bożena Józef Jędrzej Błażej Krzysztof "
        "Świętosław "
        "Święcki Śliwa Śliwiński Żak Żuk Żukowski Źródlany Ćwik Łęcki Łódź Kraków Gdańsk Poznań "
        "Wrocław "
        "Białystok Częstochowa Rzeszów Toruń Bydgoszcz Będzin Gąsior Kępa Sędzia Zając Zięba Wąsik "
        "Kołodziej Kłos Wiśniewski Wiśnia Mroźny Leśniak Kościuszki Piłsudskiego Główna Długa "
        "Spółka "
        "Żurek Róża Różański Borzęcki Ożóg Szczęsny Czyż Baś Kaś Jaś Zoś Staś Prządka Dubiński"},
    AlphabetSample{
        "cs",
        "Novák Nováková Svoboda Svobodová Novotný Novotná Dvořák Dvořáková Černý Černá Procházka "
        "Procházková Kučera Kučerová Veselý Veselá Horák Horáková Němec Němcová Pokorný Pospíšil "
        "Hájek Hájková Král Králová Jelínek Růžička Růžičková Beneš Fiala Sedláček Doležal Zeman "
        "Kolář "
        "Kolářová Navrátil Čermák Vaněk Vaňková Urban Blažek Kříž Křížová Kovář Kovařík Šimek "
        "Šimková "
        "Štěpán Štěpánek Říha Žák Žáková Tichý Ševčík Šťastný Jiří Tomáš Ondřej Lukáš Matěj Zdeněk "
        "Miloš Luboš Bohuš Aleš Radomír Jaromír Bořivoj Vojtěch Lenka Šárka Božena Růžena Jiřina "
        "Markéta Anežka Jarmila Plzeň Třebíč Příbram Děčín Ústí Kroměříž Náměstí Třída Město "
        "Václav "
        "Luděk Radek Řezníček Břetislav Dušan Ľuboš Ľudovít Štefan Baláž Kováč Kováčová Tóth "
        "Horváth "
        "Varga Ďurica Ďurčo Hudák Ondrej Košice Žilina Trenčín Bratislava Prešov Nitra Stančík "
        "Mičo "
        "Rybár Gajdoš Oravec Bartoš Hruška Ľubica Júlia Mária Žofia Ňaršík Krajčí Kráľ Vlček "
        "Jurčo"},
    AlphabetSample{
        "hu",
        "Nagy Kovács Tóth Szabó Horváth Varga Kiss Molnár Németh Farkas Balogh Papp Takács Juhász "
        "Lakatos Mészáros Oláh Simon Rácz Fekete Szilágyi Török Fehér Balázs Gál Kis Szűcs Kocsis "
        "Orsós Pintér Fodor Szalai Sipos Magyar Lukács Gulyás Bíró Király Katona László Jakab "
        "Bogdán "
        "Balog Sándor Boros Váradi Kelemen Fülöp István József János Zoltán Gábor Tamás Péter "
        "Attila "
        "András Csaba György Gergő Gergely Ádám Dávid Áron Ákos Ödön Ernő Jenő Dezső Győző "
        "Erzsébet "
        "Katalin Ilona Éva Anikó Ágnes Márta Zsófia Réka Tünde Ildikó Györgyi Emőke Enikő Hajnalka "
        "Budapest Győr Pécs Székesfehérvár Szőlős Kecskemét Hódmezővásárhely utca Kőbánya Erdős "
        "Ördög "
        "Szűts Dömötör Söröző Köves Bűnös Fűzfa Győri Erdődy Kőszegi Mező Szőke Vörös Lőrinc Őri"},
    AlphabetSample{
        "hr",
        "Horvat Kovačević Babić Marić Jurić Novak Kovačić Knežević Vuković Marković Petrović Matić "
        "Tomić Pavlović Kovač Božić Blažević Grgić Pavić Radić Perić Filipović Šarić Lovrić "
        "Vidović "
        "Perković Popović Bošnjak Jukić Barišić Šimić Željko Krešimir Dražen Saša Siniša Đurđa "
        "Đuro "
        "Đorđe Đoković Anđela Anđelka Ružica Božidar Duško Nikšić Šibenik Varaždin Požega "
        "Žnidaršič "
        "Jožef Žiga Urška Špela Štefka Matjaž Gašper Tomaž Aljoša Golob Turk Kralj Zupančič Hribar "
        "Potočnik Mlakar Kastelic Vidmar Oblak Čeh Černe Škof Krajnc Bizjak Hočevar Rožman Kos "
        "Miloš "
        "Stojković Jovanović Nikolić Đorđević Stanković Ilić Živković Mišić Ćirić Ćosić Čović "
        "Čačić "
        "Krstić Lončar Žarković Radonjić Beć Vučić Hadžić Mujčić Delić Džeko Bjelogrlić Hrvoje "
        "Vlatko"},
    AlphabetSample{
        "ro",
        "Ionescu Popescu Ştefan Ştefănescu Mădălina Mihăilă Drăgan Drăghici Tănase Călin Cătălin "
        "Cătălina Săndulescu Bălan Văcaru Gică Ilinca Răzvan Sînziana Constanţa Bucureşti Iaşi "
        "Braşov "
        "Galaţi Ploieşti Timişoara Maţi Niţă Niţu Ţepeş Ţigănaş Stănescu Lăcătuş Păun Pătraşcu "
        "Şerban "
        "Mureşan Rusu Moraru Câmpeanu Brâncuşi Sâmbăta Pîrvu Ursachi Muntean Măgureanu Florentză"},
    AlphabetSample{
        "tr",
        "Yılmaz Kaya Demir Şahin Çelik Yıldız Yıldırım Öztürk Aydın Özdemir Arslan Doğan Kılıç "
        "Aslan "
        "Çetin Kara Koç Kurt Özkan Şimşek Polat Korkmaz Çakır Erdoğan Güneş Aktaş Yalçın Bozkurt "
        "Bulut Keskin Ünal Turan Gül Güler Şen Avcı Işık Işıl Tekin Taş Köse Yavuz Coşkun Ateş "
        "Ünlü "
        "Özer Karataş Tunç Uçar Özgür Özge Özlem Gökhan Göksel Gökçe Gülşen Gülay Güneri Hüseyin "
        "İbrahim İsmail İsmet İlker İpek İrem İstanbul İzmir İzmit Ankara Eskişehir Muğla Iğdır "
        "Ağrı "
        "Kırşehir Çanakkale Çağla Çağrı Çiğdem Ayşe Ayşegül Fatoş Barış Savaş Yiğit Uğur Oğuz "
        "Tuğba "
        "Tuğçe Büşra Kübra Şükrü Şeyma Şebnem Şule Müge Müjde Begüm Ömer Önder Öykü Ümit Ülkü "
        "Nazlı "
        "Fırat Kıvanç Tarık Sıla Sırma Ilgın Dağ Dağlı Bağcı Kuşçu Demirbaş Akbaş Sarı Kırmızı "
        "Akın "
        "Altın Kadıköy Beşiktaş Sokağı Caddesi Mühendislik Müdürlüğü Genç Gençer Erdinç Elçin "
        "Seçil"},
    AlphabetSample{
        "lt",
        "Kazlauskas Jankauskas Petrauskas Stankevičius Vasiliauskas Žukauskas Butkus Paulauskas "
        "Urbonas Kavaliauskas Navickas Savickas Žilinskas Šimkus Jonaitytė Petraitytė Kazlauskaitė "
        "Rūta Eglė Živilė Vytautė Jūratė Šarūnas Mindaugas Žygimantas Bērziņš Kalniņš Ozoliņš "
        "Jānis "
        "Pēteris Kārlis Andris Māris Līga Inga Kristīne Zane Ilze Dāvis Rīga Liepāja Krūmiņš "
        "Zariņš "
        "Tamm Sepp Mägi Kask Kukk Rebane Õunapuu Jõgi Põder Pärn Tõnu Tõnis Jüri Ülo Ülle Külli "
        "Ööbik"},
    AlphabetSample{
        "ru",
        "Смирнов Иванов Кузнецов Соколов Попов Лебедев Козлов Новиков Морозов Петров Волков "
        "Соловьёв "
        "Васильев Зайцев Павлов Семёнов Голубев Виноградов Богданов Воробьёв Фёдоров Михайлов "
        "Беляев "
        "Тарасов Белов Комаров Орлов Киселёв Макаров Андреев Ковалёв Ильин Гусев Титов Кузьмин "
        "Кудрявцев Баранов Куликов Алексеев Степанов Яковлев Сорокин Сергеев Романов Захаров "
        "Борисов "
        "Королёв Герасимов Пономарёв Григорьев Иванова Смирнова Петрова Попова Соколова Лебедева "
        "Козлова Морозова Волкова Зайцева Павлова Семёнова Белова Орлова Макарова Андреева "
        "Киселёва "
        "Хохлов Шишкин Щукин Эйдельман Юрьев Якушев Жуков Цветаев Чернов Шаров Щеглов Глухов "
        "Рыбаков "
        "Александр Сергей Дмитрий Алексей Андрей Максим Евгений Владимир Иван Михаил Николай Юрий "
        "Виктор Олег Игорь Анатолий Павел Константин Роман Денис Антон Артём Илья Василий Григорий "
        "Борис Виталий Вячеслав Станислав Егор Никита Кирилл Глеб Пётр Фёдор Эдуард Яков Елена "
        "Ольга "
        "Наталья Татьяна Ирина Светлана Анна Екатерина Мария Юлия Людмила Галина Марина Анастасия "
        "Дарья Ксения Надежда Любовь Вера Валентина Виктория Алла Лариса Нина Оксана Тамара Полина "
        "Алексеевич Сергеевна Иванович Владимировна Николаевич Петровна Москва Санкт Петербург "
        "Новосибирск улица проспект переулок дом квартира область город Общество Директор Главный "
        "бухгалтер телефон работа завод школа институт Россия Ленина Мира Советская Кирова привет "
        "текст русский язык просто мобильный домашний рабочий друг мама папа такси врач"},
    AlphabetSample{
        "uk",
        "Шевченко Коваленко Бондаренко Ткаченко Кравченко Ковальчук Олійник Шевчук Коваль Поліщук "
        "Бондар Ткачук Мороз Марченко Лисенко Руденко Савченко Петренко Кравчук Клименко Савчук "
        "Гриценко Мельник Панченко Мазур Іваненко Їжакевич Юрій Ірина Леонід Андрій Наталія Євген "
        "Євгенія Олексій Олена Сергій Дмитро Михайло Василь Богдан Тарас Оксана Олеся Любомир Київ "
        "Львів Харків Україна Вулиця Зоряна Соломія Ярослав Всеволод Ігор Віктор Віталій Марія "
        "Надія"},
    AlphabetSample{
        "bg",
        "Иванов Георгиев Димитров Петров Николов Стоянов Тодоров Христов Илиев Ангелов Йорданов "
        "Атанасов Колев Маринов Цветков Димитрова Тодорова Ангелова Йорданка Петър Красимир "
        "Гергана "
        "Цветелина Румяна Пламен Христо Стефан Светослав Даниела Мариана Ивайло Бойко София "
        "Пловдив "
        "Варна Бургас Митко Пенка Радка Желязков Щерев Първанов Вълков Кръстев Къчева Ъгълов"},
    AlphabetSample{
        "el",
        "Παπαδόπουλος Παππάς Καραγιάννης Βλάχος Ιωαννίδης Οικονόμου Παπαγεωργίου Μακρής "
        "Κωνσταντινίδης Γεωργίου Δημητρίου Δημόπουλος Αγγελόπουλος Νικολάου Βασιλείου Αθανασίου "
        "Παπανικολάου Χατζής Λάμπρου Σταθόπουλος Αντωνίου Παπαδάκης Κυριακίδης Ζαχαρίου Μιχαηλίδης "
        "Θεοδωρίδης Φωτιάδης Ψωμιάδης Ξανθόπουλος Γιαννόπουλος Αναγνώστου Σωτηρίου Τσάκας Ντίνος "
        "Γιώργος Δημήτρης Κώστας Νίκος Γιάννης Χρήστος Βασίλης Παναγιώτης Θανάσης Μιχάλης Σπύρος "
        "Αλέξανδρος Στέλιος Ηλίας Πέτρος Φώτης Λευτέρης Βαγγέλης Θεόδωρος Ανδρέας Μανώλης Στέφανος "
        "Αχιλλέας Τάσος Άγγελος Μαρία Ελένη Κατερίνα Σοφία Άννα Ευαγγελία Ιωάννα Βασιλική Γεωργία "
        "Δέσποινα Ειρήνη Χριστίνα Ζωή Ευαγγέλου Όλγα Ρένα Έφη Αθήνα Θεσσαλονίκη Πάτρα Ηράκλειο "
        "Οδός Λεωφόρος Εταιρεία Διευθυντής Πρόεδρος τηλέφωνο κινητό σπίτι εργασία γραφείο Ύδρα "
        "Ώρα"},
    AlphabetSample{
        "he",
        "כהן לוי מזרחי פרץ ביטון דהן אברהם פרידמן מלכה אזולאי כץ יוסף עמר אוחיון חדד גבאי בן דוד "
        "אדרי "
        "לביא טל קליין שפירא חיים גולדברג רוזנברג רוזן שוורץ לב שלום ישראל סויסה אשכנזי בר כרמי "
        "משה "
        "יעקב יצחק שרה רבקה רחל לאה מרים חנה אסתר יוסי דני רוני אבי אלי עמית נועה תמר מיכל יעל "
        "שירה "
        "דנה הילה ענת אורית רונית גלית שלומית אורי איתן יונתן נדב עומר אלון גיא ניר עידו עוז צבי "
        "זאב "
        "ברוך מרדכי שמעון שלמה דניאל רפאל גבריאל נתן אהרון תל אביב ירושלים חיפה רחוב שדרות חברה "
        "בעמ "
        "מנהל משרד בית טלפון נייד עבודה רמת גן פתח תקווה ראשון לציון באר שבע נתניה הרצליה אלכסנדר "
        "ולדימיר סבטלנה אולגה קפלן לוין גרינברג וייס שטיין הלוי סלע אלמוג פלד שגיא ארז עדן"},
    AlphabetSample{
        "ar",
        "محمد أحمد علي حسن حسين عبد الله عبدالله عبدالرحمن إبراهيم يوسف خالد عمر عثمان سعيد صالح "
        "ناصر "
        "فهد سلطان ماجد طارق كريم مصطفى محمود السيد فاطمة عائشة مريم زينب خديجة نورة سارة ليلى هدى "
        "العتيبي الغامدي القحطاني الشمري الحربي الزهراني المطيري الدوسري حداد خوري منصور سليمان "
        "جمال "
        "شارع مدينة شركة الرياض جدة القاهرة بيروت دمشق بغداد هاتف جوال مدير مكتب بن آل أبو أم"},
};

constexpr std::array kCharacters = {
    CharacterSample{"zh-Hans",
                    "王李张刘陈杨赵黄周吴徐孙胡朱高林何郭马罗梁宋郑谢韩唐冯于董萧程曹袁邓许傅沈曾彭"
                    "吕苏卢蒋蔡贾丁魏薛叶阎"
                    "余潘杜戴夏钟汪田任姜范方石姚谭廖邹熊金陆郝孔白崔康毛邱秦江史顾侯邵孟龙万段雷钱"
                    "汤尹黎易常武乔贺赖龚文庞樊"
                    "兰殷施陶洪翟安颜倪严牛温芦季俞章鲁葛伍韦申尤毕聂丛焦向柳邢路岳齐梅莫庄辛管祝左"
                    "涂谷祁时舒耿牟卜詹关苗凌费"
                    "纪靳盛童欧甄项曲成游阳裴席卫查屈鲍位覃霍翁隋甘景薄单包司柏宁柯阮桂闵解强柴华车"
                    "冉房边欧阳上官司马诸葛",
                    "明国华文建志伟丽军平红英海玉秀春林小晓梅芳兰霞燕玲云龙杰辉强勇斌波涛鹏飞宇浩子"
                    "轩涵欣怡雨佳嘉俊豪家天成"
                    "金永荣福贵富财德义仁礼智信忠良善美娟娜静洁婷雪琳琴慧敏珍珠凤桂香莲花艳萍萌瑶琪"
                    "瑞祥庆元正新民生大中立东南北"
                    "西安康宁泰和兴盛昌学思远书翰博士达超峰山江河川清源洋涌波泽润浩然一二三四五六七"
                    "八九十月阳光星辰晨旭昊昱晖晓"
                    "曦鸣凯旋胜利毅刚坚定坤乾振宏鸿雄威武彬彪亮晶莹倩影秋冬夏菊竹松柏树森枫桐梓楠若"
                    "如诗梦想可爱心悦乐欢喜馨"
                    "依雯菲蕾蓉薇紫红青蓝白雁鹤鸽玥珂珊琦瑜璐璇露颖妍娇婉媛嫣婧妮姗娅岚岩峻崇世界代"
                    "传承继先进步升扬帆航翔翼"
                    "全权启发展保卫守护卿君臣贤哲圣杰俊彦才能力量功劳勤奋章云雷电雾霖霏淑贞惠兆伦根"
                    "宝宗尚少岭彩希延彤律恒恩"
                    "情意愿友右左巧年广应廷弘彭微恺愉慕承挺捷政敬斐斯方旺昕晏景晗智曼月朝朋本朵权来"
                    "杨林果柔栋格桃梁棋楚榕欧歌"
                    "殿毓比民水汉沁沛泉洪津浦淳淼深渊温游湘溪滨漫澜濮灵炎炜炳烨焕煜熙燕爽牧玄玮珏理"
                    "琛琼璟甜畅皓盈益真睿石礼"
                    "祖禄禹秉程稳穆童竣笑筱简紫素纯经维绍绪缘罗群羽耀聪肖育胤舒航艺艾芝芬芮苏苑茂茜"
                    "茹荷莉莎莹菁萱董蒙蓓蔚薛虎"
                    "虹行裕言训诚诺谦谨豫贝赫越跃路轶辛远迪逸邦郁重野钢钧铁铭锋锐锦镇长门闻阔陆隆雅"
                    "霄青靖音韬韵顺颂颜风飒首骁骏"
                    "高鸣鸾麒麟黎默齐",
                    "公司有限市区路号县镇乡街道省北京上海广州深圳天津重庆杭州南京武汉成都电话手机家"
                    "庭工作办公室经理总部技术科股份"
                    "集团中心大学学院医院银行部门先生女士小姐老师同学爸妈哥姐弟妹的是在人有我他这个"
                    "们到说要就会对也国际贸易信息"
                    "网络软件开发销售客户服务设计工程师主任局长秘书会计厂店村组栋单元楼室层座邮编地"
                    "址传真箱号码外婆爷奶叔姑舅"
                    "快递送餐物业修理空调汽车出租房产介绍朋友老板房东医生律师同事班长"},
    CharacterSample{"zh-Hant",
                    "陳林黃張李王吳劉蔡楊許鄭謝郭洪曾邱廖賴徐周葉蘇莊呂江何蕭羅高潘簡朱鍾彭游詹胡施"
                    "沈余盧梁趙顏柯翁魏孫戴"
                    "范方宋鄧杜傅侯曹薛丁卓馬阮董温溫唐藍蔣石古紀姚連馮歐程湯黎田康姜白汪鄒尤巫龔嚴"
                    "章凃涂金童陸夏柳邵錢伍倪池于"
                    "譚駱熊任甘秦顧毛史萬俞孔韓關鄺麥霍莫龍武賀俊饒粘岳符歐陽",
                    "志明淑芬俊傑雅婷宗翰怡君美玲家豪依玲宗緯瑋倫文佩珊國華建宏信銘秀英麗雯慧惠玉珍"
                    "秋春月嬌金枝素貞麗雪梅蘭"
                    "香桂鳳娥阿水土木火旺財福祿壽德義仁禮智忠孝和平安康永清正榮昌盛興隆達成立中大維"
                    "彥廷宇翔偉杰哲賢聖凱勳承恩"
                    "冠霖詩涵欣佳穎子芸宜蓁庭羽柏睿品妍筱潔如若薇琪瑜瑩琳瑄莉莎蓉菁芳芝萍蓮華燕鶯敏"
                    "靜嫻婉姿娟娜媛媚嫣嘉慶祥"
                    "瑞福添進發財富貴長生添丁祖蔭耀輝煌燦光照明亮晶星辰昇旭東南西北山川河海洋江湖泉"
                    "源淵深浩瀚文章書翰墨詩詞歌"
                    "賦政治民主國泰昭彰憲法律師士官兵將軍龍虎獅豹鵬鷹鶴鴻雁飛騰躍馬千里萬年百世代傳"
                    "承紹繼業學思遠慮謙恭敬友善"
                    "良誠實信良心愛慈悲喜捨樂天知命峰岳嶺崑岡勝利威武雄強健壯勇剛毅堅毅定鼎鼐乾坤宸"
                    "家宥沛丞辰睿恩昱叡均鈞鈺"
                    "銓鋒錦鎮錫鑫鐵銀銅彬斌炳煥熙煜焜燁森林松柏楷樺樹桐梓榕棟材良朝勤勉力功勛又可人"
                    "仕任佑佐作侑俐信倩健偲儀儒"
                    "元兆先全其冬凌凱初利勝卉卿原叔台史合吉吟同名向君吾呈周品哲唐善喬嘉園坤培堂壽夏"
                    "夢天奇奕妙妤妮妹姍姵娥婕媺"
                    "孟季宏宛宜宣容密寧寶尚屏岑峻崇嵐川左帆希常平幸庚康庭弘彤彥後心必志忻怡恆恬悅情"
                    "惟意慈慕慧憶懷戎成振挺捷揚"
                    "敦文斐新方于昀昂昆昌易映晉晏晨景晴智暄曉曜書曼有朋朗杏杉李村杰東枝枚柔柏查栩格"
                    "桂桓梁梅森椿楚楓榆樂檀欣歆"
                    "正毓民永求汝江沁沅沐治泰泓波洋洲浚浩海涵淇淨淑淳清渝湘源溫漢潔潤澄澤濤灝炎為烈"
                    "焱然照熊爵爾特玄玟玫玲珊珍"
                    "珮球理琦琬琴瑛瑤璇璟璿甄甫申男畇畢登皓益盈盛相真睿知碧祈祐禎秀秉秦程穎立竹竣章"
                    "筠筑簡糧純紋純紘素紫紹絜綉"
                    "綠維綺綾緯縈繼羚群翊翎翠翰者聖聰育能自致臻舒航良艾芃芊芙芮芷苓英茂茵茹荃莆莛莞"
                    "菀菡萱葦葳蒂蒨蓓蓮蔓蔚薰藝"
                    "蘋虹蜜行衍裕言詠詣詮語謙讚豐貝貞貴賓赫超越軒辛迪逸連運道達邦郁采釧鈴銘鋼錚鎧閔"
                    "陽隆雁雄集雨雲雷霆霈霓霞靖靜"
                    "韋韻順頌頤頻風飛馥馨駿高鯨鳴麒麗麟黛齊齡",
                    "公司有限股份市區路號縣鎮鄉街段巷弄樓室省臺北台中高雄新竹桃園香港九龍中環銅鑼灣"
                    "電話手機行動家庭工作辦公室經"
                    "理總部技術科集團中心大學學院醫院銀行部門先生女士小姐老師同學爸媽哥姐弟妹的是在"
                    "人有我他這個們到說要就會對也"
                    "國際貿易資訊網路軟體開發銷售客戶服務設計工程師主任局長秘書會計廠店村里鄰棟郵遞"
                    "區號地址傳真信箱號碼"},
    CharacterSample{"ja",
                    "佐鈴高田伊渡山中小加吉木林斎清崎森池橋阿石前藤小岡後長村近坂遠青井西福太三原松"
                    "竹中金和上柴酒工横宮内安谷大"
                    "丸今武平野菅杉増水新川市古堀北島浜南東河岩桜服樋辻関熊矢黒本久秋八須菊浅広成吉"
                    "片桑荒戸富大土栗星永黒飯馬"
                    "沢尾樋望若稲牧細関川渋尾萩",
                    "藤木橋中辺本村林田口松井山崎池部川前岡後谷上近石遠青西福太三原竹島金和柴酒工横"
                    "宮内安野大丸今武平杉増水清"
                    "健一美咲大輔裕子翔太直郎優誠恵拓也花亮智潤真由隆愛剛千尋浩二奈慎吾紀正樹久進春"
                    "修綾龍志保貴史京康夫光知良香信"
                    "彦聖嘉世伸結賢明雅純晋節恭法静武樹里絵理敏矢諒人代江枝美幸和男雄義博文秀勝勇孝"
                    "弘実治昭茂豊清進昇三四五六七"
                    "八九十百万次郎介助吉蔵造哉哲朗斗翼陽葵蓮湊悠蒼颯凛芽衣結菜莉桜杏凜紬心楓彩華琴"
                    "音歌奏楽希望夢未来光輝晴空海"
                    "陸洋航帆風雪月星夏秋冬冴涼早佳佐仁仙伊倫偉典准凌初利功勉匠卓卯厚友司啓善喜圭基"
                    "堅壮奎央好妃妙姫孔孟宏宗宜宣"
                    "宰寛寧尚峰峻嵐嶺巌己巧帝常幹広庄延弓弥彰影往律徳心忍念恒悟情慶憲成房扇拳挙揮操"
                    "敬敦斉新方旬旭昂昌明映昴晃晶"
                    "暁曜朋朔札李束条東柊柚柾栄桃桐梅梓梢椿楠榛槙樟欣歩毅汐沙河治泉波泰洸津浅浜涙淑"
                    "淳渉渚湧湖満源漣潮澄瀬瑛照熙"
                    "熱燈牧玄玖玲珠理琉琢瑚瑞瑠瑶璃瓜生甫由甲町留登皐益監盛直睦瞬矩祐祥禎秀秋稔穂穣"
                    "空立竜笑笙笹筆節篤紗紋紘素紫"
                    "紅経綱維綺緒緑縁織羊羽翠耀聡肇育胡能臣舜舞航芙芳苑茉茜草荒荘菊萌葉蓉薫藍虎虹衛"
                    "覚親訓詩誉誓読謙譲豪貞貢賀資"
                    "赳起越路車軍辰近迪逸遙道達遼邦郁里重野鈴鉄銀鋼錦鎮鏡鐘長門開間関阿陵隼雁雲電霞"
                    "青靖鞠響順須頼顕風颯飛香馨駒駿"
                    "高鷹鶴鹿麗麟黎黛々見取地合戸手持松形城塚沢塩場屋岸倉部坪堀垣根津浦滝澤岩黒",
                    "株式会社有限東京都大阪府京都市区町村県丁目番地号室階電話携帯自宅勤務先部課長社"
                    "長取締役営業総務人事経理開発研"
                    "究所支店本社学校大学病院銀行様殿氏先生父母兄姉弟妹祖日本国際技術情報通信工業商"
                    "事製作建設不動産保険運輸食品"
                    "北海道青森岩手宮城秋田山形福島茨城栃木群馬埼玉千葉神奈川新潟富山石川長野岐阜静"
                    "岡愛知三重滋賀兵庫和歌鳥取岡広"
                    "徳香媛高佐崎熊分児沖縄駅前通店年月日時分私家友会"},
    CharacterSample{"ko",
                    "김이박최정강조윤장임한오서신권황안송류유전홍고문양손배백허남심노하곽성차주우구"
                    "민진지엄원천방공현변함염석선설마"
                    "길연위표명기반왕금옥육인맹제모탁국여어은편용",
                    "민수서연지훈영희현우진성미경동건재범세태아상정기혜교승길은채석예용준종원호궁희"
                    "도시모병선철수자숙순옥란남"
                    "복만덕규식환택섭열근권형일대한찬빈윤유하주나라라리린림람랑루비보별봄빛솔슬실새"
                    "소송이인의원완위웅월율을음"
                    "응안애양언업여역연열염영예오온옥강건겸경계고공관광교구국군귀균극근금길김나남내"
                    "노녀능다단달담대덕도돈돌동두"
                    "득락래로룡류마만매명모목묘무문미민박반방배백범법변병보복봉부북분비빈사산삼상생"
                    "서석선설섭성세소손솔송수숙"
                    "순숭슬승시식신실심아안약양엄여연영예오옥온완왕요용우욱운웅원월위유윤율은응의이"
                    "익인일임자작장재전점정제조"
                    "종좌주준중지진집찬창채천철청초춘충치칠탁태택판팔평포표필하학한함해행향허헌혁현"
                    "협형혜호홍화환황회효후훈휘흥희",
                    "주식회사서울부산대구인천광주대전울산경기강원충북남전라제주특별시도군읍면동리로"
                    "길번지호층전화휴대집직장부서과장"
                    "대리사원팀이사님선생형누나언니오빠엄마아빠할머니친구학교병원은행은는을를에가와"
                    "과의한국기술정보통신개발영업"},
};

}  // namespace

std::span<const AlphabetSample> alphabetSamples() {
  return kAlphabets;
}

std::span<const CharacterSample> characterSamples() {
  return kCharacters;
}

}  // namespace ox
