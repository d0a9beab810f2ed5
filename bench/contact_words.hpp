#pragma once

#include <array>
#include <string_view>

// What the generated contacts are made of. Lists are blank-separated words unless a ';' separates
// them.
namespace ox::bench::words {

struct Region {
  std::string_view given;
  std::string_view family;
  std::string_view cities;
  std::string_view country;
  std::string_view topDomain;
  std::string_view dialling;
};

inline constexpr std::array kRegions = {
    Region{"Hannelore Jörn Tünde Götz Friederike Uwe Märthe Volker Annegret Dörte Siegfried Käthi",
           "Brühl Zöllner Obermüller Kröger Fuß Hölzl Steinhäuser Wägner Ostermann Pfau Lüders",
           "Nürnberg Lübeck Osnabrück Hamburg Tübingen", "Deutschland", "de", "+49"},
    Region{"Aurélie Thibault Cécile Étienne Maëlys Rémi Solène Gaël Océane Loïc Anaïs Fabrice",
           "Dubuc Lécuyer Rougé Bonnefoy Pélissier Marchand Tréguier D'Alençon Vallée Roussel",
           "Angoulême Nancy Sète Béziers Lyon", "France", "fr", "+33"},
    Region{"Iñaki Belén Tomás Rocío Germán Verónica Joaquín Nerea Adrián Yésica Hugo Macarena",
           "Ordóñez Cañas Ríos Bermúdez Santamaría Carreño Aragón Vázquez Ocaña Olmedo",
           "Ávila Gijón Sevilla Cáceres Bilbao", "España", "es", "+34"},
    Region{"Sanne Jeroen Daniël Femke Noëlle Bram Lotte Cornélis Maaike Ruben Zoë Thijs",
           "De Vries Van den Berg Kuipers Jansen Bruïne Hoekstra Postma Van Dijk Mulder",
           "Utrecht Leiden Zwolle Groningen", "Nederland", "nl", "+31"},
    Region{"Päivi Jyrki Hämä Säde Mikko Tuija Väinö Aino Eero Riikka Yrjö Marjatta",
           "Mäkelä Hämäläinen Järvinen Lehtonen Pöllänen Väisänen Koskinen Räty Laine",
           "Jyväskylä Hämeenlinna Turku Oulu", "Suomi", "fi", "+358"},
    Region{"Ștefan Ileana Mădălina Răzvan Cătălin Ioana Brândușa Gheorghe Sânziana Dănuț",
           "Țăranu Ionescu Păun Bălan Stănescu Cârciumaru Ghiță Moldovan Văcărescu",
           "Timișoara Iași Brașov Constanța", "România", "ro", "+40"},
    Region{"Željka Domagoj Šime Ivana Đurđica Krešimir Mirjana Tvrtko Nikša Vesna Zoran",
           "Horvatić Šarić Đukić Kovačević Žanić Babić Ćosić Matošić Vuković Pešut",
           "Šibenik Varaždin Zagreb Čakovec", "Hrvatska", "hr", "+385"},
    Region{"Guðrún Þór Sigríður Einar Hjördís Ólafur Ásta Snæbjörn Ingibjörg Kári",
           "Þórðarson Jónsdóttir Sigurðsson Ægisdóttir Hákonarson Björnsdóttir",
           "Reykjavík Ísafjörður Akureyri", "Ísland", "is", "+354"},
    Region{"Aoife Padraig Niamh Eoin Róisín Fergus Gráinne Connor Maeve Declan Sorcha",
           "O'Brien Kelly Ní Dhomhnaill Byrne Fitzgerald McCarthy Doyle O'Sullivan",
           "Dublin Cork Galway Sligo", "Ireland", "ie", "+353"},
    Region{"Graça Vítor Leonor Tiago Ângela Nuno Beatriz Álvaro Teresa Rúben Mafalda",
           "Brandão Leitão Peixoto Assunção Mourão Sequeira Galvão Teixeira Falcão",
           "Guimarães Setúbal Coimbra Viseu", "Portugal", "pt", "+351"},
    Region{"Bjørg Håvard Solveig Kåre Ragnhild Øyvind Marit Sindre Astrid Jørn Åshild",
           "Bråten Lødrup Hauge Sæther Grønli Øverland Nygård Skjæveland Dahl",
           "Bodø Ålesund Bergen Molde", "Norge", "no", "+47"},
    Region{"Ľubomír Božena Štefánia Marián Zuzana Július Ľudmila Ondrej Žofia Róbert",
           "Hruška Ďurica Šimko Kováčik Mráz Baláž Žiak Čierny Vrábel",
           "Košice Žilina Prešov Nitra", "Slovensko", "sk", "+421"},
};

// One character each; some are read otherwise as a family name or beside another character.
inline constexpr std::string_view kHanFamily =
    "周杨吴陈孙郑冯蒋沈韩朱秦尤许何吕施张孔曹严华金魏陶姜戚谢邹喻柏水窦章云苏潘葛范彭郎鲁韦昌马苗凤"
    "花"
    "方俞任袁柳史唐费廉岑薛雷贺倪汤滕殷罗毕郝邬安常于傅皮齐康伍余顾孟黄和穆萧尹姚邵汪祁毛狄米贝臧单"
    "解仇"
    "曾翟覃乐查区朴盖尉";
inline constexpr std::string_view kHanFamilyOfTwo =
    "夏侯 东郭 南宫 西门 轩辕 独孤 宇文 端木 濮阳 淳于";
inline constexpr std::string_view kHanGiven =
    "安邦碧波才昌晨诚春丹道德栋恩发芳菲峰福刚高歌光国海瀚航恒弘虹厚华怀焕慧吉继佳坚健江杰锦京景静娟"
    "君凯康可"
    "坤兰磊立莲良林凌柳龙路岚满茂梅民敏明牧楠宁培鹏平齐琪千谦乔钦青秋全群仁荣蓉如睿若森山珊尚韶生诗"
    "世舒思松"
    "涛天田庭同婉威维文熙贤祥潇晓欣新星雄秀旭轩璇学雪雅言扬尧依艺易毅英永友宇玉誉元苑岳跃云韵泽展昭"
    "珍真振之"
    "志中忠舟卓紫宗祖长重乐行传朝藏降盛解车参省乘";

inline constexpr std::string_view kHanCities =
    "苏州市 青岛市 长沙市 重庆市 厦门市 大连市 昆明市 郑州市";
inline constexpr std::string_view kHanDistricts =
    "姑苏区 市南区 岳麓区 渝北区 思明区 中山区 五华区 金水区";
inline constexpr std::string_view kHanStreets = "滨江路 学府路 光明街 青年大街 湖滨南路 新华路";
inline constexpr std::string_view kHanCompanyNames =
    "海蓝 嘉禾 启明 龙腾 正大 云帆 四方 鼎新 万象 沃土 晨光 远景";
inline constexpr std::string_view kHanTrades = "机械 化工 食品 信息 能源 纺织 建筑 教育 通信";
inline constexpr std::string_view kHanCompanyKinds = "有限公司 股份有限公司 集团 研究所";
inline constexpr std::string_view kHanTitles =
    "副总经理 律师 采购员 技术员 讲师 护士 会计师 项目经理";

inline constexpr std::string_view kCompanyNames =
    "Aurora Bergström Cielo Dünya Élan Fönix Granit Hórus Ígloo Jupiter Kontur Lørdal Mistral "
    "Nébula Orbis Pläne Quarz Río Sólo Tundra Umbra Vênus Wärme Ypsilon";
inline constexpr std::string_view kCompanyKinds =
    "GmbH;Ltd;S.A.R.L.;AS;B.V.;Oy;d.o.o.;& Partner;ehf.;Lda.;S.R.L.;Group";
inline constexpr std::string_view kDepartments =
    "Procurement;Research;Vertrieb;Ventes;Logistics;财务部;研发部;Customer care";
inline constexpr std::string_view kTitles =
    "Accountant;Head of Research;Chargée d'affaires;Bauleiter;Arkitekt;Directora comercial;"
    "Nurse;Editor;Účtovníčka;Toimitusjohtaja;Senior Consultant;Mechanic";
inline constexpr std::string_view kStreets =
    "Bahnhofstraße;Avenue du Général;Calle del Río;Mannerheimintie;Strada Lungă;Ulica Mosta;"
    "Patrick Street;Rua das Flores;Storgata;Hlavná";
inline constexpr std::string_view kCustomLabels =
    "Chalet;Front desk;Night shift;Wochenende;Atelier;老家;Garage;Summer house";
inline constexpr std::string_view kCategories =
    "Colleagues;Cousins;Clients;Parents;Chess;Hiking;Studio;Dentists;Landlords;Team A;Team B;"
    "Nachbarn;Verwandte;Lehrer;Voisins;Collègues;Médecins;Vecinos;Primos;Naapurit;Colegi;Susjedi;"
    "Vinir;Vizinhos;Naboer;Susedia;亲戚;校友会;合伙人;室友;俱乐部;医院;Investors;Board "
    "games;Tennis;"
    "Volunteers;Journalists;Orchestra;Plumbers;Taxi;Hotels;Airline;Garden;Kindergarten;Chorus;"
    "Reading;Cooking;Cycling;Sailing;Archive";
inline constexpr std::string_view kNoteWords =
    "called about the delivery; wants an answer by Friday, mailto only; hat nach dem Angebot "
    "gefragt; "
    "vegetarian, no nuts; ancien collègue de Lyon; 周末不要打电话; 负责华东地区; sister of the "
    "owner; "
    "prefers tea; ring twice; bringt den Schlüssel mit; sends a postcard from every trip; "
    "muistaa syntymäpäivät; 合同下个月到期; reads German and norsk; pays at the end of the quarter";

}  // namespace ox::bench::words
