<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="sv_SE" sourcelanguage="en">
<context>
    <name>Autoguide_startup_Dialog</name>
    <message>
        <source>Do you want to run the auto setup guide?</source>
        <translation>Vill du köra Autosetup guiden?</translation>
    </message>
    <message>
        <source>Auto setup guide helps you to make all settings berfore your first start, including a fuel and ignition map.</source>
        <translation>Autosetup guiden hjälper dig att göra alla inställningar före första starten, inklusive en bränsle- och tändkarta.</translation>
    </message>
    <message>
        <source>Do not show this question again at next program start. You find Auto setup in Settings menu</source>
        <translation>Visa inte denna ruta igen. Du hittar Autosetup under menyn Settings</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
</context>
<context>
    <name>Setup_Guide</name>
    <message>
        <source>This guide will help you through all necessary steps to get a start map and all settings right for your first start attempt.</source>
        <translation>Den här guiden hjälper dig genom alla nödvändiga steg för att få en startkarta och alla inställningar rätt inför ditt första startförsök.</translation>
    </message>
    <message>
        <source>Remember that the easiest way to start is to open one of the base maps that is included in the folder /Basemaps</source>
        <translation>Kom ihåg att det enklaste sättet att börja är att öppna en av grundkartorna som finns i mappen /Basemaps</translation>
    </message>
    <message>
        <source>You can anytime click back or forward or make other than suggested changes.</source>
        <translation>Du kan när som helst klicka bakåt eller framåt eller göra andra ändringar än de föreslagna.</translation>
    </message>
    <message>
        <source>Select the correct sensor definitions you plan to use for AFR, TPS, MAP, Coolant temp and IAT. If you miss your sensor you can create new ones, by change tab to sensor editor.</source>
        <translation>Välj rätt givardefinitioner för de givare du tänker använda för AFR, TPS, MAP, kylvätsketemperatur och insugsluftens temperatur (IAT). Saknas din givare kan du skapa en ny genom att byta flik till sensoreditorn.</translation>
    </message>
    <message>
        <source>Select the right cam and crank setup to match your engine. </source>
        <translation>Välj den uppsättning av kam- och vevaxelgivare som passar din motor. </translation>
    </message>
    <message>
        <source>Later you might have to change the trigger slope at this page, depending on if you have positive or negative slope</source>
        <translation>Senare kan du behöva ändra triggerflanken på den här sidan, beroende på om du har positiv eller negativ flank</translation>
    </message>
    <message>
        <source>Setup the number of fuel cells you prefere for the load and RPM axis. Also spread out the cells so you cover the MAP you plan to use</source>
        <translation>Ställ in det antal bränsleceller du föredrar för last- och varvtalsaxeln. Sprid också ut cellerna så att de täcker det MAP-område du tänker använda</translation>
    </message>
    <message>
        <source>Setup the number of ignition cells you prefere for the load and RPM axis. Also spread out the cells so you cover the MAP you plan to use</source>
        <translation>Ställ in det antal tändceller du föredrar för last- och varvtalsaxeln. Sprid också ut cellerna så att de täcker det MAP-område du tänker använda</translation>
    </message>
    <message>
        <source>Enter your engine data in this fuel map calculation.</source>
        <translation>Ange motorns data i den här beräkningen av bränslekartan.</translation>
    </message>
    <message>
        <source>Adjust numbers of injectors, cylinders, volume efficiency etc until the estimated power for both air and fuel match your engine.</source>
        <translation>Justera antal spridare, cylindrar, volymetrisk verkningsgrad osv. tills den beräknade effekten för både luft och bränsle stämmer med din motor.</translation>
    </message>
    <message>
        <source>If you have a 180 hp engine, adjust until the &apos;air power&apos; indicates 180hp.</source>
        <translation>Om du har en motor på 180 hk, justera tills &apos;air power&apos; (lufteffekten) visar 180hp.</translation>
    </message>
    <message>
        <source>Normally the fuel is dimensioned to be enough to slihtly more.</source>
        <translation>Normalt dimensioneras bränslet så att det räcker till något mer.</translation>
    </message>
    <message>
        <source>If your injectors are too small to deliver fuel for the selected power, or you can not rev enough - You will get a warning</source>
        <translation>Om dina spridare är för små för att ge bränsle till den valda effekten, eller om du inte kan varva tillräckligt högt - får du en varning</translation>
    </message>
    <message>
        <source>When ready press &apos;Generate fuel map&apos;.</source>
        <translation>När du är klar, tryck på &apos;Generate fuel map&apos;.</translation>
    </message>
    <message>
        <source>Enter the engine data in this ignition map calculation.</source>
        <translation>Ange motorns data i den här beräkningen av tändkartan.</translation>
    </message>
    <message>
        <source>If you use TPS as base for the ignition map, make sure that the lowest voltage in the map is equal to released throttle, and maximal TPS boltage is the last cell in the map.</source>
        <translation>Om du använder TPS som grund för tändkartan, se till att den lägsta spänningen i kartan motsvarar släppt gaspedal och att högsta TPS-spänningen är den sista cellen i kartan.</translation>
    </message>
    <message>
        <source>The defalut values are selected to match a standard 4 cyl production engine. Make sure that it does not ping at full load before using it as your real ignition setting</source>
        <translation>Standardvärdena är valda för att passa en vanlig fyrcylindrig serietillverkad motor. Se till att den inte spikar vid full last innan du använder den som din riktiga tändinställning</translation>
    </message>
    <message>
        <source>Make sure that it does not ping at full load before using it as your real ignition setting</source>
        <translation>Se till att den inte spikar vid full last innan du använder den som din riktiga tändinställning</translation>
    </message>
    <message>
        <source>When ready press &apos;Generate ignition map&apos;.</source>
        <translation>När du är klar, tryck på &apos;Generate ignition map&apos;.</translation>
    </message>
    <message>
        <source>Make sure the settings reflects your needs. By default it is a standard setting which use closed loop AFR control.</source>
        <translation>Kontrollera att inställningarna motsvarar dina behov. Som standard är det en grundinställning som använder sluten AFR-reglering.</translation>
    </message>
    <message>
        <source>AFR Control</source>
        <translation>AFR-reglering</translation>
    </message>
    <message>
        <source>An alternative is to not use closed loop at full load</source>
        <translation>Ett alternativ är att inte använda sluten reglering vid full last</translation>
    </message>
    <message>
        <source>Make sure the settings reflects your needs. By default it is a standard setting which use closed loop AFR control with target AFR 14.7 (lambda=1.0) at low load and AFR 12.5 (lambda 0.85) at high load.</source>
        <translation>Kontrollera att inställningarna motsvarar dina behov. Som standard är det en grundinställning som använder sluten AFR-reglering med mål-AFR 14,7 (lambda=1,0) vid låg last och AFR 12,5 (lambda 0,85) vid hög last.</translation>
    </message>
    <message>
        <source>AFR Control target values</source>
        <translation>Målvärden för AFR-regleringen</translation>
    </message>
    <message>
        <source>Make sure the settings reflects your needs. By default it is a standard setting, but if you have changed the temperature sensor, you have to change the settings</source>
        <translation>Kontrollera att inställningarna motsvarar dina behov. Som standard är det en grundinställning, men om du har bytt temperaturgivare måste du ändra inställningarna</translation>
    </message>
    <message>
        <source>Temp Corrections</source>
        <translation>Temperaturkorrigeringar</translation>
    </message>
    <message>
        <source>Start up fuel</source>
        <translation>Startbränsle</translation>
    </message>
    <message>
        <source>Make sure the settings reflects your needs. By default it is a standard setting</source>
        <translation>Kontrollera att inställningarna motsvarar dina behov. Som standard är det en grundinställning</translation>
    </message>
    <message>
        <source>Fuel acceleration</source>
        <translation>Accelerationsbränsle</translation>
    </message>
    <message>
        <source>Idle settings</source>
        <translation>Tomgångsinställningar</translation>
    </message>
    <message>
        <source>Digital inputs</source>
        <translation>Digitala ingångar</translation>
    </message>
    <message>
        <source>Digital outputs</source>
        <translation>Digitala utgångar</translation>
    </message>
    <message>
        <source>PWM Outputs</source>
        <translation>PWM-utgångar</translation>
    </message>
    <message>
        <source>Analog settings</source>
        <translation>Analoga inställningar</translation>
    </message>
    <message>
        <source>Limits / Warnings</source>
        <translation>Gränser / Varningar</translation>
    </message>
    <message>
        <source>Before you make your first start attemt, you should verify if the crank and cam trigger slope is positive or negative </source>
        <translation>Innan du gör ditt första startförsök bör du kontrollera om vev- och kamaxelgivarnas triggerflank är positiv eller negativ </translation>
    </message>
    <message>
        <source>First shut down the power to the fuel injectors to prevent the fuel from flooding. </source>
        <translation>Stäng först av strömmen till bränslespridarna så att motorn inte dränks med bränsle. </translation>
    </message>
    <message>
        <source>Start the high speed digital logging, and crank the engine. Stop the logging</source>
        <translation>Starta den digitala höghastighetsloggningen och dra runt motorn. Stoppa loggningen</translation>
    </message>
    <message>
        <source>Zoom in the missing pulse of the crank sensor and compare with the pictures in the slope settings. Change if necessary.</source>
        <translation>Zooma in den saknade pulsen från vevaxelgivaren och jämför med bilderna i flankinställningarna. Ändra vid behov.</translation>
    </message>
    <message>
        <source>You should also verify that the crank trigger wheel is correct positioned. </source>
        <translation>Du bör också kontrollera att vevaxelns triggerhjul sitter rätt. </translation>
    </message>
    <message>
        <source>Keep the power off to the fuel injectors to prevent the fuel from flooding. </source>
        <translation>Håll strömmen till bränslespridarna avstängd så att motorn inte dränks med bränsle. </translation>
    </message>
    <message>
        <source>Connect a normal stroboscope to the first cylinder and verify that the ignition fires at 15 deg, which is the factory preset.</source>
        <translation>Anslut ett vanligt stroboskop till första cylindern och kontrollera att tändningen sker vid 15 grader, vilket är fabriksinställningen.</translation>
    </message>
    <message>
        <source>If not change the &apos;Crank sensor teeth between missing pulse and 51deg BTDC marking&apos; and potentially fine adjust the setting until it does</source>
        <translation>Om inte, ändra &apos;Crank sensor teeth between missing pulse and 51deg BTDC marking&apos; och finjustera vid behov inställningen tills den gör det</translation>
    </message>
    <message>
        <source>Congratulation, it is time to make a first start attemt!</source>
        <translation>Grattis, dags för ett första startförsök!</translation>
    </message>
</context>
</TS>
