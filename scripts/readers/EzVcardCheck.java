import ezvcard.VCard;
import ezvcard.io.text.VCardReader;
import java.io.File;
import java.util.Map;
import java.util.TreeMap;

/**
 * Reads the vCards of files with ez-vcard. What its reader warns of is a refusal; what its validator
 * remarks (a TYPE word or a property that another version defined) is listed with its number.
 */
public class EzVcardCheck {
  public static void main(String[] paths) throws Exception {
    int cards = 0;
    int refused = 0;
    Map<String, Integer> remarks = new TreeMap<>();
    for (String path : paths) {
      try (VCardReader reader = new VCardReader(new File(path))) {
        for (VCard card = reader.readNext(); card != null; card = reader.readNext()) {
          ++cards;
          for (var warning : reader.getWarnings()) {
            ++refused;
            System.out.println(path + ": card " + cards + ": " + warning.getMessage());
          }
          String version = card.getVersion().getVersion();
          for (var entry : card.validate(card.getVersion())) {
            String property =
                entry.getKey() == null ? "card" : entry.getKey().getClass().getSimpleName();
            for (var warning : entry.getValue()) {
              remarks.merge(version + " " + property + ": " + warning.getMessage(), 1, Integer::sum);
            }
          }
        }
      }
    }
    remarks.forEach((remark, count) -> System.out.println("  " + count + " x " + remark));
    System.out.println("ez-vcard: " + cards + " cards, " + refused + " refused, "
        + remarks.values().stream().mapToInt(Integer::intValue).sum() + " remarks");
    System.exit(refused > 0 ? 1 : 0);
  }
}
